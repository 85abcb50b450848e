# SPDX-License-Identifier: Apache-2.0
# Run by the build: bundles the page's sources with NODE in DIRECTORY, which contains the bundler,
# and writes the page as C++ source to CODE.
file(COPY "${SOURCE}/src" "${SOURCE}/package.json" "${SOURCE}/tsconfig.json" "${SOURCE}/build.mjs"
     DESTINATION "${DIRECTORY}")

execute_process(COMMAND "${NODE}" build.mjs page.html WORKING_DIRECTORY "${DIRECTORY}"
                COMMAND_ERROR_IS_FATAL ANY)

file(READ "${DIRECTORY}/page.html" page)
string(FIND "${page}" ")page\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "the page contains the end of the literal that holds it")
endif()
configure_file("${SOURCE}/Page.cpp.in" "${CODE}" @ONLY)
