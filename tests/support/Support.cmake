# Functions that let a test intercept calls of the library to the system.

function(zav_wrap target)
  foreach(function ${ARGN})
    target_link_options(${target} PRIVATE LINKER:--wrap=${function})
  endforeach()
endfunction()

# Allocations.h
function(zav_test_allocations target)
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/Allocations.cpp)
  zav_wrap(${target} malloc aligned_alloc strdup vasprintf free)
endfunction()

# ZavIni.h
function(zav_test_opens target)
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/ZavIni.cpp)
  zav_wrap(${target} fopen)
endfunction()

# Heap.h
function(zav_test_heap target)
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/Heap.cpp)
endfunction()

# Faults.h
function(zav_test_faults target)
  target_sources(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/Faults.cpp)
  zav_wrap(${target}
    access chmod clone fclose fcntl fopen fread fwrite getppid mkdir open pipe2 poll posix_spawn
    posix_spawn_file_actions_addclosefrom_np posix_spawn_file_actions_adddup2 posix_spawn_file_actions_addopen
    posix_spawnattr_setflags read rmdir syscall unlink)
endfunction()
