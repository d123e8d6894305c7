# Sets QUORVAH_STATIC_WORKS when programs can be linked without shared libraries here, Expat's among them.
#
# A configuration in an encoding that Expat does not know is still read with the modules that the C library loads for it,
# so these must be of the version that the program was linked with. Switch this off for a program that is to run on
# other systems than those that it is built on.
option(QUORVAH_STATIC "Link quorvah without shared libraries where their static ones are installed" ON)

include(CheckCXXSourceCompiles)
include(CMakePushCheckState)

find_library(QUORVAH_EXPAT_ARCHIVE libexpat.a)
mark_as_advanced(QUORVAH_EXPAT_ARCHIVE)

if(QUORVAH_EXPAT_ARCHIVE)
  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_FLAGS -fPIE)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  set(CMAKE_REQUIRED_INCLUDES ${EXPAT_INCLUDE_DIRS})
  set(CMAKE_REQUIRED_LIBRARIES ${QUORVAH_EXPAT_ARCHIVE})
  check_cxx_source_compiles([[
    #include <expat.h>
    #include <iconv.h>
    #include <string>
    int main(int count, char** words) {
      const std::string text(words[count - 1]);
      return iconv_open("UCS-4LE", text.c_str()) != nullptr && XML_ParserCreate(text.c_str()) != nullptr;
    }]] QUORVAH_STATIC_WORKS)
  cmake_pop_check_state()
endif()
