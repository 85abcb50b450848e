# SPDX-License-Identifier: Apache-2.0
# Configures the workbench without a bundled page: with an npm that fails, one that hangs, and none.
# AUTO continues and states the reason in the cache and in the program's code; ON stops.
cmake_minimum_required(VERSION 3.21)
set(directory "${WORK}/page-without-network")
file(REMOVE_RECURSE "${directory}")
file(WRITE "${directory}/fails" "#!/bin/sh\necho registry out of reach >&2\nexit 1\n")
file(WRITE "${directory}/hangs" "#!/bin/sh\nexec sleep 600\n")
file(CHMOD "${directory}/fails" "${directory}/hangs"
     PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)

include("${SOURCE}/workbench/report/FetchBundler.cmake")
veskar_fetch_bundler(SOURCE "${SOURCE}/workbench/report" DIRECTORY "${directory}/fetched"
                     NPM "${directory}/hangs" LIMIT 1)
if(NOT bundler_error MATCHES "timeout")
  message(FATAL_ERROR "npm that hangs: '${bundler_error}'")
endif()

# configure(MODE NPM): sets status, errors and code.
function(configure mode npm)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${directory}/${mode}" -G "${GENERATOR}"
            -DVESKAR_BUILD_TESTS=OFF -DVESKAR_BUILD_EXAMPLES=OFF "-DVESKAR_REPORT=${mode}"
            -DVESKAR_NODE=/bin/false "-DVESKAR_NPM=${npm}"
    RESULT_VARIABLE status
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
  set(status "${status}" PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_left_out reason)
  file(READ "${directory}/AUTO/CMakeCache.txt" cache)
  file(READ "${directory}/AUTO/workbench/ReportPage.cpp" code)
  if(NOT status EQUAL 0
     OR NOT output MATCHES "veskar report: this program was built without the page[^\n]*${reason}"
     OR NOT cache MATCHES "VESKAR_REPORT_MISSING:INTERNAL=this program was built without[^\n]*${reason}"
     OR NOT code MATCHES "reportPage = R\"page\\(\\)page\""
     OR NOT code MATCHES "reportPageMissing = R\"text\\(this program was built without")
    message(FATAL_ERROR "AUTO: status ${status}, ${output}\n${code}")
  endif()
endfunction()

configure(AUTO "${directory}/fails")
expect_left_out("npm could not fetch")
if(NOT output MATCHES "registry out of reach")
  message(FATAL_ERROR "AUTO hides what npm said: ${output}")
endif()

# The next configuration does not query the registry again.
configure(AUTO "${directory}/hangs")
expect_left_out("npm could not fetch")

configure(AUTO "")
expect_left_out("Node.js")

configure(ON "${directory}/fails")
if(status EQUAL 0 OR NOT output MATCHES "npm could not fetch")
  message(FATAL_ERROR "ON: status ${status}, ${output}")
endif()
