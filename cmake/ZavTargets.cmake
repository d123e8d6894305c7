# How every target of the project is built: one function for the flags, one for a test executable.

function(zav_target_flags target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(ZAV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZAV_SANITIZE)
    # Not vptr: its check opens a pipe and finds every object invalid in a host that is out of descriptors.
    target_compile_options(${target} PRIVATE -fsanitize=${ZAV_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZAV_SANITIZE})
    # The library needs the sanitizers' C++ part, in hosts written in C too.
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
  if(ZAV_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

# A static library of one layer: zav_layer(name source...)
function(zav_layer name)
  add_library(${name} STATIC ${ARGN})
  zav_target_flags(${name})
endfunction()

# A test executable whose every test is known to ctest: zav_test(name SOURCES ... LINK ... LABELS ...)
function(zav_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  zav_target_flags(${name})
  # What is tested is optimised; the tests are not, as that is half of the time that they take to build.
  target_compile_options(${name} PRIVATE -O0)
  if(ZAV_PRECOMPILE)
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <filesystem> <fstream> <map> <string> <vector>)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 LABELS "${ARG_LABELS}")
endfunction()
