# SPDX-License-Identifier: Apache-2.0
# Builds the page with an npm that fails: AUTO goes on without the page and says why, ON stops.
set(directory "${WORK}/page-without-network")
file(REMOVE_RECURSE "${directory}")

function(build_page mode)
  execute_process(
    COMMAND
      "${CMAKE_COMMAND}" "-DSOURCE=${SOURCE}" "-DDIRECTORY=${directory}"
      "-DCODE=${directory}/${mode}.cpp" -DNODE=false -DNPM=false "-DREPORT=${mode}"
      -P "${SOURCE}/BuildPage.cmake"
    RESULT_VARIABLE status
    ERROR_VARIABLE errors)
  set(status "${status}" PARENT_SCOPE)
  set(errors "${errors}" PARENT_SCOPE)
endfunction()

build_page(AUTO)
if(NOT status EQUAL 0 OR NOT errors MATCHES "veskar report:")
  message(FATAL_ERROR "AUTO: status ${status}, ${errors}")
endif()
file(READ "${directory}/AUTO.cpp" code)
foreach(part "reportPage = R\"page()page\"" "reportPageMissing = R\"text(this program was built without")
  string(FIND "${code}" "${part}" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "AUTO: no ${part} in\n${code}")
  endif()
endforeach()

build_page(ON)
if(status EQUAL 0 OR NOT errors MATCHES "npm ci failed" OR EXISTS "${directory}/ON.cpp")
  message(FATAL_ERROR "ON: status ${status}, ${errors}")
endif()
