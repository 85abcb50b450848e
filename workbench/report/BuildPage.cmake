# SPDX-License-Identifier: Apache-2.0
# Run by the build: bundles the pages' sources with NODE in DIRECTORY, which contains the bundler,
# and writes the pages as C++ source to CODE.
file(COPY "${SOURCE}/src" "${SOURCE}/package.json" "${SOURCE}/tsconfig.json" "${SOURCE}/build.mjs"
     DESTINATION "${DIRECTORY}")

# Bundles the page of a folder into a variable.
function(bundle folder variable)
  execute_process(COMMAND "${NODE}" build.mjs "${variable}.html" "${folder}"
                  WORKING_DIRECTORY "${DIRECTORY}" COMMAND_ERROR_IS_FATAL ANY)
  file(READ "${DIRECTORY}/${variable}.html" page)
  string(FIND "${page}" ")page\"" clash)
  if(NOT clash EQUAL -1)
    message(FATAL_ERROR "the page contains the end of the literal that holds it")
  endif()
  set(${variable} "${page}" PARENT_SCOPE)
endfunction()

bundle(. page)
bundle(live live_page)
bundle(calibration calibration_page)
configure_file("${SOURCE}/Page.cpp.in" "${CODE}" @ONLY)
