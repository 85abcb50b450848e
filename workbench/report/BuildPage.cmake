# SPDX-License-Identifier: Apache-2.0
# Run by the build: copies the page's sources to DIRECTORY, bundles them there with NODE, and writes
# the page into the C++ source CODE. NPM fetches the bundler when the lock file has changed; where it
# cannot, the page is left out if REPORT is AUTO.
file(COPY "${SOURCE}/src" "${SOURCE}/package.json" "${SOURCE}/package-lock.json" "${SOURCE}/.npmrc"
          "${SOURCE}/tsconfig.json" "${SOURCE}/build.mjs"
     DESTINATION "${DIRECTORY}")

file(SHA256 "${SOURCE}/package-lock.json" lock)
set(stamp "${DIRECTORY}/node_modules/.veskar-lock")
set(installed "")
if(EXISTS "${stamp}")
  file(READ "${stamp}" installed)
endif()
if(NOT installed STREQUAL lock)
  execute_process(
    COMMAND "${NPM}" ci --omit=dev --no-progress --fetch-retry-maxtimeout=15000
    WORKING_DIRECTORY "${DIRECTORY}"
    RESULT_VARIABLE status
    OUTPUT_VARIABLE log
    ERROR_VARIABLE log)
  if(NOT status EQUAL 0)
    if(NOT REPORT STREQUAL "AUTO")
      message(FATAL_ERROR "npm ci failed\n${log}")
    endif()
    set(page_missing "this program was built without the page of the report: npm could not fetch \
what bundles it; give it a network, remove workbench/ReportPage.cpp from the build and build again")
    message(WARNING "veskar report: ${page_missing}\n${log}")
    configure_file("${SOURCE}/Page.cpp.in" "${CODE}" @ONLY)
    return()
  endif()
  file(WRITE "${stamp}" "${lock}")
endif()

execute_process(COMMAND "${NODE}" build.mjs page.html WORKING_DIRECTORY "${DIRECTORY}"
                COMMAND_ERROR_IS_FATAL ANY)

file(READ "${DIRECTORY}/page.html" page)
string(FIND "${page}" ")page\"" clash)
if(NOT clash EQUAL -1)
  message(FATAL_ERROR "the page contains the end of the literal that holds it")
endif()
configure_file("${SOURCE}/Page.cpp.in" "${CODE}" @ONLY)
