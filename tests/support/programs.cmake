# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# How test programs are made.

# Fixtures, clients and waits: headers, and what they need of the rest of the tree.
add_library(quorvel_test_support INTERFACE)
target_include_directories(quorvel_test_support INTERFACE ${CMAKE_CURRENT_LIST_DIR})
target_link_libraries(quorvel_test_support INTERFACE
  quorvel_classes quorvel_simulated quorvel_test_hang_guard)
string(COMPARE NOTEQUAL "${QUORVEL_SANITIZE}" "" sanitized)
target_compile_definitions(quorvel_test_support INTERFACE
  QUORVEL_SANITIZED=${sanitized} QUORVEL_EMULATED=$<BOOL:${CMAKE_CROSSCOMPILING}>)

# Ends a program that hangs.
add_library(quorvel_test_hang_guard STATIC ${CMAKE_CURRENT_LIST_DIR}/hang_guard.cc)

# The library's pauses under the test's control.
add_library(quorvel_test_pauses OBJECT ${CMAKE_CURRENT_LIST_DIR}/pauses.cc)
target_link_libraries(quorvel_test_pauses PUBLIC quorvel_test_support ${CMAKE_DL_LIBS})

if(NOT QUORVEL_TESTS)
  return()
endif()

# The system's, whose modules ./dev installs: another one may come first in PATH.
if(NOT DEFINED Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
  set(Python3_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)

add_library(quorvel_test_main OBJECT ${CMAKE_CURRENT_LIST_DIR}/main.cc)
target_link_libraries(quorvel_test_main PUBLIC quorvel_test_support GTest::gmock GTest::gtest)
# What nearly every test includes costs more to read than most tests to compile; and optimizing them
# makes nothing that is tested any faster.
target_compile_options(quorvel_test_main PUBLIC -O0)
target_precompile_headers(quorvel_test_main PRIVATE <gmock/gmock.h> <gtest/gtest.h> <functional>
                          <future> <string> <thread> <vector>)

# quorvel_test(NAME sources...): a GoogleTest program on the library and the simulated phone. CTest
# runs each test in a process of its own. Suites with "Slow" in their name wait for real pauses or
# run many rounds: they carry the label slow, get more time, since each round takes many times as
# long on a busy machine, and start first (COST).
function(quorvel_test name)
  add_executable(${name} ${ARGN})
  set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
  target_link_libraries(${name} PRIVATE quorvel_test_main)
  target_precompile_headers(${name} REUSE_FROM quorvel_test_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_FILTER "-*Slow*")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 TEST_FILTER "*Slow*" TEST_LIST ${name}_slow
                       PROPERTIES LABELS slow TIMEOUT 1500 COST 1000)
endfunction()

# quorvel_other_tests(VARIABLE): the folder's *_test.cc that are in none of its programs so far.
function(quorvel_other_tests variable)
  file(GLOB tests CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *_test.cc)
  get_directory_property(programs BUILDSYSTEM_TARGETS)
  foreach(program ${programs})
    get_target_property(sources ${program} SOURCES)
    list(REMOVE_ITEM tests ${sources})
  endforeach()
  set(${variable} ${tests} PARENT_SCOPE)
endfunction()

# A locale that the machine need not have: its decimal point is a comma, a point groups digits, and
# the small letter of I is no i.
set(locales ${CMAKE_CURRENT_BINARY_DIR}/locales)
set(locale tr_TR.UTF-8)
add_custom_command(
  OUTPUT ${locales}/${locale}/LC_NUMERIC
  COMMAND ${CMAKE_COMMAND} -E make_directory ${locales}
  COMMAND localedef --no-archive --inputfile=tr_TR --charmap=UTF-8 ${locales}/${locale}
  VERBATIM)
add_custom_target(quorvel_test_locale ALL DEPENDS ${locales}/${locale}/LC_NUMERIC)

# quorvel_locale_test(NAME PROGRAM FILTER): these of its tests again in one process that has that
# locale. Not under the sanitizers, which find a leak of the C library's own there.
function(quorvel_locale_test name program filter)
  if(NOT QUORVEL_SANITIZE)
    add_test(NAME ${name}_in_turkish COMMAND ${program} --gtest_filter=${filter})
    set_tests_properties(${name}_in_turkish PROPERTIES
      ENVIRONMENT "LOCPATH=${locales};QUORVEL_TEST_LOCALE=${locale}")
  endif()
endfunction()
