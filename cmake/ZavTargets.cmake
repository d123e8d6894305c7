# Functions for the targets of the project: flags, static libraries, test executables.

function(zav_target_flags target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(ZAV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZAV_SANITIZE)
    # The check vptr opens a pipe. In a host without free descriptors it reports every object as invalid.
    target_compile_options(${target} PRIVATE -fsanitize=${ZAV_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${ZAV_SANITIZE})
    # The library needs the C++ run time of the sanitizers, also in hosts written in C.
    set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  endif()
  if(ZAV_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
endfunction()

# Precompiles what most sources of a target include: zav_precompile(target header...). ccache gives its objects faster than the
# compiler reads such headers, so this is for machines without it.
function(zav_precompile target)
  if(ZAV_PRECOMPILE AND NOT CCACHE)
    target_precompile_headers(${target} PRIVATE <algorithm> <optional> <string> <string_view> <vector> ${ARGN})
  endif()
endfunction()

# A static library of one layer: zav_layer(name source...)
function(zav_layer name)
  add_library(${name} STATIC ${ARGN})
  zav_target_flags(${name})
endfunction()

# A test executable with a ctest test for each of its tests: zav_test(name SOURCES ... LINK ... LABELS ...)
function(zav_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  zav_target_flags(${name})
  # Optimising the tests themselves would double the time to build them.
  target_compile_options(${name} PRIVATE -O0)
  if(ZAV_PRECOMPILE)
    target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <filesystem> <fstream> <map> <string> <vector>)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_LINK} GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 300 LABELS "${ARG_LABELS}")
endfunction()
