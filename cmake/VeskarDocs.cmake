# SPDX-License-Identifier: Apache-2.0
# `cmake --build ... --target docs`: API pages from the public headers. Anything undocumented there
# is an error.
find_package(Doxygen QUIET)
if(DOXYGEN_FOUND)
  configure_file("${PROJECT_SOURCE_DIR}/docs/Doxyfile.in" "${PROJECT_BINARY_DIR}/Doxyfile" @ONLY)
  add_custom_target(
    docs
    COMMAND "${DOXYGEN_EXECUTABLE}" "${PROJECT_BINARY_DIR}/Doxyfile"
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    COMMENT "API pages in ${PROJECT_BINARY_DIR}/docs/html"
    VERBATIM)
endif()
