# zav_short_lived_program(TARGET [LIBRARY...]): links a program, whose runs are so short that loading shared libraries would
# be a good part of them, without any. Where that cannot be done, or one of these libraries is shared, the C++ library
# at least is linked into it.
#
# A file in an encoding that Expat does not know is still read with the modules that the C library loads for it, so these
# must be of the version that the program was linked with. Switch this off for programs that are to run on other systems
# than those that they are built on.
option(ZAV_STATIC_SCANNERS "Link the scanners without shared libraries where static ones are installed" ON)

include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

find_library(ZAV_EXPAT_ARCHIVE libexpat.a)
mark_as_advanced(ZAV_EXPAT_ARCHIVE)

# What takes the place of EXPAT::EXPAT in libraries of such programs: a program names Expat's static one in a property.
set(ZAV_EXPAT $<IF:$<BOOL:$<TARGET_PROPERTY:EXPAT_ARCHIVE>>,$<TARGET_PROPERTY:EXPAT_ARCHIVE>,EXPAT::EXPAT>)

if(ZAV_EXPAT_ARCHIVE)
  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_FLAGS -fPIE)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  set(CMAKE_REQUIRED_INCLUDES ${EXPAT_INCLUDE_DIRS})
  set(CMAKE_REQUIRED_LIBRARIES ${ZAV_EXPAT_ARCHIVE})
  check_cxx_source_compiles([[
    #include <expat.h>
    #include <iconv.h>
    #include <string>
    int main(int count, char** words) {
      const std::string text(words[count - 1]);
      return iconv_open("UCS-4LE", text.c_str()) != nullptr && XML_ParserCreate(text.c_str()) != nullptr;
    }]] ZAV_STATIC_WORKS)
  cmake_pop_check_state()
endif()

function(zav_short_lived_program target)
  # The run-time libraries of sanitizers and fuzzers are shared.
  if(ZAV_SANITIZE OR ZAV_FUZZ)
    return()
  endif()
  set(shared ${ARGN})
  list(FILTER shared EXCLUDE REGEX "\\.a$")
  if(ZAV_STATIC_SCANNERS AND ZAV_STATIC_WORKS AND NOT shared)
    # What is left out of the libraries need not be relocated.
    target_link_options(${target} PRIVATE -static-pie LINKER:--gc-sections)
    set_target_properties(${target} PROPERTIES EXPAT_ARCHIVE ${ZAV_EXPAT_ARCHIVE})
  else()
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
