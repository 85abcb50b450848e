# SPDX-License-Identifier: Apache-2.0
# `cmake --build ... --target docs`: builds API pages from the public headers. Undocumented items
# are an error.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
  add_custom_target(
    docs
    COMMAND "${DOXYGEN_EXECUTABLE}" "${PROJECT_BINARY_DIR}/Doxyfile"
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMENT "API pages in ${PROJECT_BINARY_DIR}/docs/html"
    VERBATIM)
else()
  add_custom_target(
    docs
    COMMAND
      "${CMAKE_COMMAND}" -E echo
      "The API pages need doxygen: install it (scripts/bootstrap check), then configure again."
    COMMAND "${CMAKE_COMMAND}" -E false
    VERBATIM)
endif()
