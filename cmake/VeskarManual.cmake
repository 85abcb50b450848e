# SPDX-License-Identifier: Apache-2.0
# Manual pages of the veskar program, made from its help, so that both always agree. A cross build
# runs the program with its emulator; without an emulator or help2man there are no pages.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT TARGET veskar_program)
  return()
endif()
find_program(VESKAR_HELP2MAN help2man NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(VESKAR_HELP2MAN)
if(NOT VESKAR_HELP2MAN OR (CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR))
  message(STATUS "veskar: no manual pages (help2man is missing, or an emulator)")
  return()
endif()

set(pages "${PROJECT_BINARY_DIR}/man")
set(maker "${PROJECT_SOURCE_DIR}/scripts/manual-pages")
add_custom_command(
  OUTPUT "${pages}/veskar.1"
  COMMAND "${maker}" "${pages}" ${PROJECT_VERSION} ${CMAKE_CROSSCOMPILING_EMULATOR}
          "$<TARGET_FILE:veskar_program>"
  DEPENDS veskar_program "${maker}"
  COMMENT "Manual pages in ${pages}"
  VERBATIM)
add_custom_target(veskar_manual ALL DEPENDS "${pages}/veskar.1")
install(
  DIRECTORY "${pages}/"
  DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
  COMPONENT tools
  FILES_MATCHING PATTERN "*.1")
