# zav_library(NAME MODULE HEADERS CALL): finds a C or C++ library by its pkg-config module and makes the interface library
# zav_NAME of it. HEADERS and CALL are a use of the library that needs its object code.
# zav_scanner_links(TARGET NAME...): links the scanner TARGET, which uses these libraries.
#
# A scanner runs for milliseconds, and loading shared libraries takes a good part of that. So scanners are linked
# statically where all their libraries can be, and with shared libraries otherwise. Everything else uses shared libraries.
#
# A static scanner still loads the C library's modules for encodings that Expat does not know. These must be of the
# version of the C library that the scanner was linked with.
option(ZAV_STATIC_SCANNERS "Link the scanners statically where static libraries are installed" ON)

include(CheckCXXSourceCompiles)
include(CMakePushCheckState)
find_package(PkgConfig REQUIRED)

# The C library of some architectures has no start file for static programs at random addresses.
if(ZAV_STATIC_SCANNERS)
  cmake_push_check_state(RESET)
  set(CMAKE_REQUIRED_FLAGS -fPIE)
  set(CMAKE_REQUIRED_LINK_OPTIONS -static-pie)
  check_cxx_source_compiles("int main() { return 0; }" ZAV_STATIC_PIE)
  cmake_pop_check_state()
  if(ZAV_STATIC_PIE)
    set(static_link -static-pie)
  else()
    set(static_link -static)
  endif()
endif()

function(zav_library name module headers call)
  pkg_check_modules(${name} REQUIRED QUIET IMPORTED_TARGET GLOBAL ${module})
  if(ZAV_STATIC_SCANNERS)
    # A static library may be missing, or may need others that are. Only linking it tells.
    list(TRANSFORM headers REPLACE "(.+)" "#include <\\1>\n" OUTPUT_VARIABLE includes)
    list(JOIN includes "" includes)
    cmake_push_check_state(RESET)
    set(CMAKE_REQUIRED_FLAGS -fPIE)
    set(CMAKE_REQUIRED_LINK_OPTIONS ${static_link})
    set(CMAKE_REQUIRED_INCLUDES ${${name}_STATIC_INCLUDE_DIRS})
    set(CMAKE_REQUIRED_LIBRARIES ${${name}_STATIC_LDFLAGS})
    check_cxx_source_compiles("${includes}\nint main() { return ${call} ? 1 : 0; }" ZAV_STATIC_${name})
    cmake_pop_check_state()
  endif()

  add_library(zav_${name} INTERFACE)
  target_include_directories(zav_${name} SYSTEM INTERFACE ${${name}_INCLUDE_DIRS})
  # One layer is linked into static scanners and into programs with shared libraries: the program decides.
  set(static $<BOOL:$<TARGET_PROPERTY:ZAV_STATIC>>)
  target_link_libraries(zav_${name} INTERFACE
    "$<${static}:${${name}_STATIC_LDFLAGS}>"
    "$<$<NOT:${static}>:PkgConfig::${name}>")
  # pkg-config also names what the library itself needs, which its users need not load.
  target_link_options(zav_${name} INTERFACE LINKER:--as-needed)
endfunction()

zav_library(expat expat expat.h "XML_ParserCreate(nullptr)")
zav_library(zlib zlib zlib.h "zlibVersion() == nullptr")

function(zav_scanner_links target)
  # The run-time libraries of sanitizers and fuzzers are shared.
  if(NOT ZAV_STATIC_SCANNERS OR ZAV_SANITIZE OR ZAV_FUZZ)
    return()
  endif()
  foreach(name IN LISTS ARGN)
    if(NOT ZAV_STATIC_${name})
      message(STATUS "${target} uses shared libraries: ${name} cannot be linked statically")
      return()
    endif()
  endforeach()
  # What is left out of the libraries need not be relocated.
  target_link_options(${target} PRIVATE ${static_link} LINKER:--gc-sections)
  set_target_properties(${target} PROPERTIES ZAV_STATIC ON)
endfunction()
