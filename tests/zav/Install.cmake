# Installs a build into an empty directory, and builds hosts from that directory alone.
#     cmake -DBUILD=... -DWORK=... -DVERSION=... -DC=... -DCXX=... -DCONSUMER=... -DSOURCE=... -P Install.cmake
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect output expected)
  if(NOT output STREQUAL expected)
    message(FATAL_ERROR "expected \"${expected}\", not \"${output}\"")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
# An installation can be moved.
file(RENAME ${WORK}/first ${WORK}/prefix)

file(GLOB_RECURSE installed RELATIVE ${WORK}/prefix ${WORK}/prefix/*)
foreach(header zav.h zav.hpp zav_codes.h)
  if(NOT "include/${header}" IN_LIST installed)
    message(FATAL_ERROR "${header} is not installed: ${installed}")
  endif()
endforeach()
foreach(file IN LISTS installed)
  if(file MATCHES "\\.a$|gtest|tests|internal")
    message(FATAL_ERROR "${file} is internal and must not be installed")
  endif()
endforeach()

file(STRINGS ${BUILD}/CMakeCache.txt release REGEX "^CMAKE_BUILD_TYPE:[A-Z]+=Release$")
if(release)
  file(GLOB_RECURSE programs ${WORK}/prefix/bin/* ${WORK}/prefix/lib*/*.so ${WORK}/prefix/libexec/*)
  if(NOT programs MATCHES "/bin/zav;.*libzav\\.so;.*/quorvah;.*/quorvis")
    message(FATAL_ERROR "the programs and the library are not all installed: ${programs}")
  endif()
  foreach(program IN LISTS programs)
    run(readelf --wide --section-headers ${program})
    if(output MATCHES "\\.debug_|\\.zdebug_")
      message(FATAL_ERROR "${program} has debug information")
    endif()
  endforeach()
endif()

# With find_package.
run(${CMAKE_COMMAND} -G Ninja -S ${CONSUMER} -B ${WORK}/consumer -DCMAKE_PREFIX_PATH=${WORK}/prefix -DZAV_WANTED=${VERSION}
  -DCMAKE_C_COMPILER=${C} -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/c_host)
expect("${output}" "OperatingSystem\n")
run(${WORK}/consumer/cpp_host)
expect("${output}" "messages came\n")

# Below 1.0 another minor version is incompatible.
foreach(other 0.0 0.99 1.0)
  execute_process(
    COMMAND ${CMAKE_COMMAND} -G Ninja -S ${CONSUMER} -B ${WORK}/refused -DCMAKE_PREFIX_PATH=${WORK}/prefix -DZAV_WANTED=${other}
      -DCMAKE_C_COMPILER=${C} -DCMAKE_CXX_COMPILER=${CXX}
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
  if(result EQUAL 0)
    message(FATAL_ERROR "version ${other} was found, but ${VERSION} is installed")
  endif()
endforeach()

# With pkg-config.
file(GLOB_RECURSE pc ${WORK}/prefix/*/zav.pc)
get_filename_component(pc_directory ${pc} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pc_directory})
run(pkg-config --modversion zav)
expect("${output}" "${VERSION}\n")
run(pkg-config --cflags --libs zav)
separate_arguments(package UNIX_COMMAND "${output}")
run(pkg-config --variable=libdir zav)
string(STRIP "${output}" libdir)
run(${C} -std=c99 ${CONSUMER}/host.c ${package} -Wl,-rpath,${libdir} -o ${WORK}/pc_c_host)
run(${CXX} -std=c++17 ${CONSUMER}/host.cpp ${package} -Wl,-rpath,${libdir} -o ${WORK}/pc_cpp_host)
run(${WORK}/pc_c_host)
expect("${output}" "OperatingSystem\n")
run(${WORK}/pc_cpp_host)
expect("${output}" "messages came\n")

# The installed command finds the installed scanners and signatures.
run(${WORK}/prefix/bin/zav sw --root ${WORK}/prefix --guid zav.nginx --format csv)
if(NOT output MATCHES "^result,guid,name,variable,value")
  message(FATAL_ERROR "the installed command printed \"${output}\"")
endif()

# The programs in the README work, built in each way that it shows.
file(COPY ${SOURCE}/examples DESTINATION ${WORK})
run(${CMAKE_COMMAND} -G Ninja -S ${WORK}/examples -B ${WORK}/examples/build -DCMAKE_PREFIX_PATH=${WORK}/prefix
  -DCMAKE_C_COMPILER=${C})
run(${CMAKE_COMMAND} --build ${WORK}/examples/build)

file(STRINGS ${SOURCE}/README.md by_pkg_config REGEX "^cc ")
string(REGEX REPLACE "^cc " "${C} -Wl,-rpath,${libdir} " by_pkg_config "${by_pkg_config}")
execute_process(COMMAND sh -c "${by_pkg_config}" WORKING_DIRECTORY ${WORK}/examples COMMAND_ERROR_IS_FATAL ANY)

run(${WORK}/prefix/bin/zav hw --group Processor --format json)
string(JSON processors LENGTH "${output}" groups Processor)
set(names "")
math(EXPR last "${processors} - 1")
foreach(processor RANGE ${last})
  string(JSON name GET "${output}" groups Processor ${processor} Name)
  string(APPEND names "${name}\n")
endforeach()
run(${WORK}/examples/build/processors)
expect("${output}" "${names}")
run(${WORK}/examples/processors)
expect("${output}" "${names}")

run(dpkg-query -W -f "bash \${source:Upstream-Version}\n" bash)
set(bash "${output}")
run(${WORK}/examples/build/shell)
expect("${output}" "${bash}")

# The C++ example prints the same.
run(${CMAKE_COMMAND} -G Ninja -S ${WORK}/examples/cpp -B ${WORK}/examples/cpp/build -DCMAKE_PREFIX_PATH=${WORK}/prefix
  -DCMAKE_CXX_COMPILER=${CXX})
run(${CMAKE_COMMAND} --build ${WORK}/examples/cpp/build)
run(${WORK}/examples/cpp/build/packages)
if(NOT output MATCHES "^cpu0 .*\n${bash}$")
  message(FATAL_ERROR "the C++ example printed \"${output}\"")
endif()

# The Python package, and its example.
set(ENV{PYTHONPATH} ${WORK}/prefix/lib/python3/dist-packages)
set(ENV{ZAV_LIBRARY} ${libdir}/libzav.so.1)
run(/usr/bin/python3 -B -c "print(__import__('importlib.metadata').metadata.version('zav'))")
expect("${output}" "${VERSION}\n")
file(GLOB_RECURSE scanner ${WORK}/prefix/*/quorvah)
get_filename_component(toolkit ${scanner} DIRECTORY)
run(/usr/bin/python3 -B ${WORK}/examples/python/inventory.py ${toolkit})
if(NOT output MATCHES "^cpu0 .*\n${bash}$")
  message(FATAL_ERROR "the Python example printed \"${output}\"")
endif()
