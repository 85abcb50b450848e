# SPDX-License-Identifier: Apache-2.0
# Completion for shells, made from the program's commands and options. A cross build runs the
# program with its emulator; without one there is none.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT TARGET veskar_program)
  return()
endif()
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  message(STATUS "veskar: no completion for shells (an emulator is missing)")
  return()
endif()

set(scripts)
foreach(place IN ITEMS bash:bash-completion/completions/veskar zsh:zsh/vendor-completions/_veskar
                       fish:fish/vendor_completions.d/veskar.fish)
  string(REPLACE ":" ";" place "${place}")
  list(POP_FRONT place shell)
  set(script "${PROJECT_BINARY_DIR}/completion/${place}")
  get_filename_component(directory "${script}" DIRECTORY)
  file(MAKE_DIRECTORY "${directory}")
  add_custom_command(
    OUTPUT "${script}"
    COMMAND ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:veskar_program>" completion ${shell}
            > "${script}.new"
    COMMAND "${CMAKE_COMMAND}" -E rename "${script}.new" "${script}"
    DEPENDS veskar_program
    COMMENT "Completion for ${shell}"
    VERBATIM)
  list(APPEND scripts "${script}")
endforeach()
add_custom_target(veskar_completion ALL DEPENDS ${scripts})
install(
  DIRECTORY "${PROJECT_BINARY_DIR}/completion/"
  DESTINATION "${CMAKE_INSTALL_DATADIR}"
  COMPONENT tools
  PATTERN "*.new" EXCLUDE)
