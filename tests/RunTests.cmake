# SPDX-License-Identifier: Apache-2.0
# How ctest runs the programs of tests.
include(GoogleTest)
include(NotEmulated.cmake)

# Emulated programs of tests are run in so many parts.
set(VESKAR_EMULATED_PARTS 4)

# veskar_run_tests(TARGET [PROPERTY VALUE...]): lets ctest run each test of a program in a process of
# its own. In an emulator, where starting a process takes longer than most tests do, a part of the
# tests shares one.
function(veskar_run_tests target)
  if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 ${ARGN})
    return()
  endif()
  list(JOIN VESKAR_NOT_EMULATED ":" left_out)
  math(EXPR last "${VESKAR_EMULATED_PARTS} - 1")
  foreach(part RANGE ${last})
    add_test(NAME ${target}.${part} COMMAND ${target} --gtest_brief=1 --gtest_filter=-${left_out})
    set_tests_properties(
      ${target}.${part}
      PROPERTIES TIMEOUT 1200
                 ENVIRONMENT "GTEST_TOTAL_SHARDS=${VESKAR_EMULATED_PARTS};GTEST_SHARD_INDEX=${part}"
                 ${ARGN})
  endforeach()
endfunction()
