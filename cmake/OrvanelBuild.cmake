# Compiler settings, and the two functions that all source folders use.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      ${CCACHE_PROGRAM})
endif()
find_program(MOLD_PROGRAM mold)
if(MOLD_PROGRAM)
  add_link_options(-fuse-ld=mold)
endif()

# SSSE3 is the baseline; hot loops dispatch at run time to whatever the CPU has.
add_compile_options(-mssse3)
# Pixel memory is bytes to one function and 16-, 32- or 64-bit lanes to the next.
add_compile_options(-fno-strict-aliasing)
# Qt's lower-case keywords collide with names of oneTBB: write Q_SIGNALS, Q_EMIT.
add_compile_definitions(QT_NO_KEYWORDS)
add_library(orvanel_warnings INTERFACE)
target_compile_options(orvanel_warnings INTERFACE
  -Wall -Wextra -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  $<$<BOOL:${ORVANEL_WERROR}>:-Werror>
  # clang's version of this warning is too strict.
  $<$<CXX_COMPILER_ID:GNU>:-Wdouble-promotion>
  # Attributes that only g++ knows.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-attributes>)

if(ORVANEL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer -O1 -g)
  add_link_options(-fsanitize=address,undefined)
  # The instrumentation causes false positives in g++.
  add_compile_options(-Wno-maybe-uninitialized)
elseif(ORVANEL_THREAD_SANITIZE)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -O1 -g)
  add_link_options(-fsanitize=thread)
endif()

if(ORVANEL_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "The fuzzers need clang: configure with -DCMAKE_CXX_COMPILER=clang++")
  endif()
  # All libraries are instrumented; only the fuzzers link libFuzzer's main().
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# orvanel_room(name SOURCES ... LIBS ... PRIVATE_LIBS ... PCH ...)
# One folder under src/ is one static library with an explicit source list.
function(orvanel_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LIBS;PRIVATE_LIBS;PCH" ${ARGN})
  add_library(orvanel_${name} STATIC ${ROOM_SOURCES})
  target_include_directories(orvanel_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(orvanel_${name} PUBLIC ${ROOM_LIBS} PRIVATE orvanel_warnings ${ROOM_PRIVATE_LIBS})
  if(ROOM_PCH)
    target_precompile_headers(orvanel_${name} PRIVATE ${ROOM_PCH})
  endif()
endfunction()

# orvanel_add_test(name SOURCES ... LIBS ... [LABELS ...] [WITHOUT_ENGINE])
# One test program per folder; every TEST is a ctest entry. Window tests run offscreen.
function(orvanel_add_test name)
  cmake_parse_arguments(ARG "WITHOUT_ENGINE" "" "SOURCES;LIBS;LABELS" ${ARGN})
  include(GoogleTest)
  add_executable(${name} ${ARG_SOURCES})
  if(NOT ARG_WITHOUT_ENGINE)
    target_link_libraries(${name} PRIVATE orvanel_test_background)
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE orvanel_warnings ${ARG_LIBS} GTest::gmock GTest::gtest)
  target_precompile_headers(${name} PRIVATE <gtest/gtest.h> <gmock/gmock.h>)
  if(NOT ARG_LABELS)
    set(ARG_LABELS unit)
  endif()
  set(prefix "")
  if(ORVANEL_SANITIZE)
    set(prefix "sanitized.")
  endif()
  gtest_discover_tests(${name} TEST_PREFIX "${prefix}" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 600
               ENVIRONMENT "QT_QPA_PLATFORM=offscreen;XDG_RUNTIME_DIR=/tmp;QT_LOGGING_RULES=*.debug=false")
endfunction()
