# GoogleTest built in the word size of this build, and one function to add a test program.

if(NOT EXISTS /usr/src/googletest/CMakeLists.txt)
  message(FATAL_ERROR "The sources of GoogleTest are missing: install the package googletest.")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)

# Tests are compiled far more often than they need to be fast, and most of their text is GoogleTest's.
set(ZX_TEST_OPTIONS -O0 -g1 -U_FORTIFY_SOURCE)
foreach(target gtest gtest_main gmock)
  target_compile_options(${target} PRIVATE ${ZX_TEST_OPTIONS})
endforeach()

# The headers that all tests include, compiled once.
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.cc CONTENT "")
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.c CONTENT "typedef int nothing_to_compile;\n")
add_executable(zx_test_headers EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/test_headers.cc ${CMAKE_BINARY_DIR}/test_headers.c)
target_link_libraries(zx_test_headers PRIVATE GTest::gmock GTest::gtest_main zx_warnings Threads::Threads)
target_compile_options(zx_test_headers PRIVATE ${ZX_TEST_OPTIONS})
target_precompile_headers(zx_test_headers PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:<gtest/gtest.h$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<memory$<ANGLE-R>>" "$<$<COMPILE_LANGUAGE:CXX>:<string$<ANGLE-R>>"
  "$<$<COMPILE_LANGUAGE:CXX>:<vector$<ANGLE-R>>" "$<$<COMPILE_LANGUAGE:C>:<stdint.h$<ANGLE-R>>")

# Several test files are compiled as one: most of the time goes into what they all include. Names at the top of a file
# must then be told apart from those of the others, or the program asks for SEPARATE files.
option(ZX_JOIN_TESTS "Compile several test files as one" ON)
# To warnings, a file that is part of another is a header, and a local name may well be one of another file's top.
add_library(zx_joined INTERFACE)
target_compile_options(zx_joined INTERFACE -Wno-shadow -Wshadow=local "$<$<COMPILE_LANGUAGE:CXX>:-Wno-subobject-linkage>")

# zx_add_test(NAME SOURCES... [LIBRARIES ...] [SHARDS n] [SEPARATE]): a test program and its entries for ctest. The sources
# may be a mix of C and C++. With SHARDS the program's tests are spread over that many processes.
function(zx_add_test name)
  cmake_parse_arguments(ARG "SEPARATE" "SHARDS" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock GTest::gtest_main zx_warnings Threads::Threads)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_options(${name} PRIVATE ${ZX_TEST_OPTIONS})
  target_precompile_headers(${name} REUSE_FROM zx_test_headers)
  if(ZX_JOIN_TESTS AND NOT ARG_SEPARATE)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
    target_link_libraries(${name} PRIVATE zx_joined)
  endif()
  if(NOT ARG_SHARDS)
    set(ARG_SHARDS 1)
  endif()
  math(EXPR last "${ARG_SHARDS} - 1")
  foreach(shard RANGE ${last})
    set(test ${name})
    if(ARG_SHARDS GREATER 1)
      set(test ${name}.${shard})
    endif()
    add_test(NAME ${test} COMMAND ${name})
    set_tests_properties(${test} PROPERTIES TIMEOUT 600
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${ARG_SHARDS};GTEST_SHARD_INDEX=${shard};GTEST_BRIEF=1;ASAN_OPTIONS=detect_leaks=1")
  endforeach()
endfunction()
