# SPDX-License-Identifier: Apache-2.0
# The page of `veskar report`: bundled by Node.js into one HTML file, which is compiled in. Whether
# this is possible is decided at configuration time, so that the build needs no network and the
# matching tests are defined.
include("${CMAKE_CURRENT_LIST_DIR}/FetchBundler.cmake")
set(page_source "${CMAKE_CURRENT_SOURCE_DIR}/report")
set(page_directory "${CMAKE_CURRENT_BINARY_DIR}/report-page")
set(page_code "${CMAKE_CURRENT_BINARY_DIR}/ReportPage.cpp")

# They run on the build machine, also in a cross build.
find_program(VESKAR_NODE node NO_CMAKE_FIND_ROOT_PATH)
find_program(VESKAR_NPM npm NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(VESKAR_NODE VESKAR_NPM)

# After a failure the registry is tried again only when the page is required, not at every
# configuration.
file(SHA256 "${page_source}/package-lock.json" page_lock)
set(without_page "this program was built without the page of the report")
set(page_missing "")
if(NOT VESKAR_REPORT)
  set(page_missing "${without_page} (VESKAR_REPORT is OFF)")
elseif(NOT VESKAR_NODE OR NOT VESKAR_NPM)
  set(page_missing "${without_page}: Node.js (node and npm) was missing; install it, configure with \
-DVESKAR_REPORT=ON and build again")
elseif(VESKAR_REPORT STREQUAL "AUTO" AND VESKAR_REPORT_REFUSED STREQUAL page_lock)
  set(page_missing "${VESKAR_REPORT_MISSING}")
else()
  veskar_fetch_bundler(SOURCE "${page_source}" DIRECTORY "${page_directory}" NPM "${VESKAR_NPM}"
                       LIMIT 60)
  set(refused "")
  if(bundler_error)
    set(refused "${page_lock}")
    set(page_missing "${without_page}: npm could not fetch what bundles it; give it a network, \
configure with -DVESKAR_REPORT=ON and build again")
    message(STATUS "${bundler_error}")
  endif()
  set(VESKAR_REPORT_REFUSED "${refused}" CACHE INTERNAL "Lock file that npm could not fetch")
endif()
# Read by scripts and tests.
set(VESKAR_REPORT_MISSING "${page_missing}" CACHE INTERNAL "Why the report has no page")

if(page_missing)
  if(VESKAR_REPORT AND NOT VESKAR_REPORT STREQUAL "AUTO")
    message(FATAL_ERROR "VESKAR_REPORT is ON, but ${page_missing}")
  endif()
  message(STATUS "veskar report: ${page_missing}")
  configure_file("${page_source}/Page.cpp.in" "${page_code}" @ONLY)
else()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${page_source}/package-lock.json")
  file(GLOB page_files CONFIGURE_DEPENDS "${page_source}/src/*" "${page_source}/src/*/*" "${page_source}/*.json"
       "${page_source}/*.mjs")
  add_custom_command(
    OUTPUT "${page_code}"
    COMMAND
      "${CMAKE_COMMAND}" "-DSOURCE=${page_source}" "-DDIRECTORY=${page_directory}"
      "-DCODE=${page_code}" "-DNODE=${VESKAR_NODE}" -P "${page_source}/BuildPage.cmake"
    DEPENDS ${page_files} "${page_source}/BuildPage.cmake" "${page_source}/Page.cpp.in"
    COMMENT "Bundling the page of the report"
    VERBATIM)
endif()
target_sources(veskar_workbench PRIVATE "${page_code}")
