# SPDX-License-Identifier: Apache-2.0
# The page of `veskar report`: bundled by Node.js into one HTML file, which is compiled in.
set(page_source "${CMAKE_CURRENT_SOURCE_DIR}/report")
set(page_directory "${CMAKE_CURRENT_BINARY_DIR}/report-page")
set(page_code "${CMAKE_CURRENT_BINARY_DIR}/ReportPage.cpp")

# They run while building, so that those of the build machine count, also in a cross build.
find_program(VESKAR_NODE node NO_CMAKE_FIND_ROOT_PATH)
find_program(VESKAR_NPM npm NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(VESKAR_NODE VESKAR_NPM)

set(page_missing "")
if(NOT VESKAR_REPORT)
  set(page_missing "this program was built without the page of the report (VESKAR_REPORT is OFF)")
elseif(NOT VESKAR_NODE OR NOT VESKAR_NPM)
  set(page_missing "this program was built without the page of the report: Node.js (node and npm) \
was missing; install it, configure and build again")
  if(NOT VESKAR_REPORT STREQUAL "AUTO")
    message(FATAL_ERROR "VESKAR_REPORT needs node and npm")
  endif()
endif()

if(page_missing)
  message(STATUS "veskar report: ${page_missing}")
  configure_file("${page_source}/Page.cpp.in" "${page_code}" @ONLY)
else()
  file(GLOB page_files CONFIGURE_DEPENDS "${page_source}/src/*" "${page_source}/*.json"
       "${page_source}/*.mjs" "${page_source}/.npmrc")
  add_custom_command(
    OUTPUT "${page_code}"
    COMMAND
      "${CMAKE_COMMAND}" "-DSOURCE=${page_source}" "-DDIRECTORY=${page_directory}"
      "-DCODE=${page_code}" "-DNODE=${VESKAR_NODE}" "-DNPM=${VESKAR_NPM}"
      "-DREPORT=${VESKAR_REPORT}"
      -P "${page_source}/BuildPage.cmake"
    DEPENDS ${page_files} "${page_source}/BuildPage.cmake" "${page_source}/Page.cpp.in"
    COMMENT "Bundling the page of the report"
    VERBATIM)
endif()
target_sources(veskar_workbench PRIVATE "${page_code}")

# The tests are others with the page than without.
if(page_missing)
  set(VESKAR_HAS_REPORT_PAGE OFF PARENT_SCOPE)
else()
  set(VESKAR_HAS_REPORT_PAGE ON PARENT_SCOPE)
endif()
