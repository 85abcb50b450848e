# SPDX-License-Identifier: Apache-2.0
# Copies the page's sources to DIRECTORY and lets NPM fetch the bundler there, unless it has been
# fetched for this lock file already. Included by the configuration; sets `bundler_error` to the
# reason of a failure, empty on success. LIMIT: timeout of the registry in seconds.
function(veskar_fetch_bundler)
  cmake_parse_arguments(ARG "" "SOURCE;DIRECTORY;NPM;LIMIT" "" ${ARGN})
  file(COPY "${ARG_SOURCE}/package.json" "${ARG_SOURCE}/package-lock.json" "${ARG_SOURCE}/.npmrc"
       DESTINATION "${ARG_DIRECTORY}")
  file(SHA256 "${ARG_SOURCE}/package-lock.json" lock)
  set(stamp "${ARG_DIRECTORY}/node_modules/.veskar-lock")
  set(installed "")
  if(EXISTS "${stamp}")
    file(READ "${stamp}" installed)
  endif()
  set(bundler_error "")
  if(NOT installed STREQUAL lock)
    execute_process(
      COMMAND "${ARG_NPM}" ci --omit=dev --no-progress --fetch-retries=1 --fetch-timeout=20000
      WORKING_DIRECTORY "${ARG_DIRECTORY}"
      TIMEOUT ${ARG_LIMIT}
      RESULT_VARIABLE status
      OUTPUT_VARIABLE log
      ERROR_VARIABLE log)
    if(status EQUAL 0)
      file(WRITE "${stamp}" "${lock}")
    else()
      set(bundler_error "npm ci: ${status}\n${log}")
    endif()
  endif()
  set(bundler_error "${bundler_error}" PARENT_SCOPE)
endfunction()
