# SPDX-License-Identifier: Apache-2.0
# Run by CPack after packing: corrects the packages where CPack has no option. Before 3.31 CPack has
# no Multi-Arch field; it adds scripts that call ldconfig, which a trigger does already; and file
# modes depend on the umask of the user.
function(dpkg_deb)
  execute_process(COMMAND dpkg-deb ${ARGV} OUTPUT_VARIABLE said COMMAND_ERROR_IS_FATAL ANY
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(said "${said}" PARENT_SCOPE)
endfunction()

foreach(file IN LISTS CPACK_PACKAGE_FILES)
  dpkg_deb(--field "${file}" Package)
  set(entry "${CPACK_VESKAR_PACKAGES}")
  list(FILTER entry INCLUDE REGEX ":${said}:")
  string(REGEX REPLACE ".*:" "" multi_arch "${entry}")

  set(directory "${CPACK_TEMPORARY_DIRECTORY}/${said}")
  dpkg_deb(--raw-extract "${file}" "${directory}")
  if(EXISTS "${directory}/DEBIAN/triggers")
    file(REMOVE "${directory}/DEBIAN/postinst" "${directory}/DEBIAN/postrm")
  endif()
  file(READ "${directory}/DEBIAN/control" control)
  file(WRITE "${directory}/DEBIAN/control" "Multi-Arch: ${multi_arch}\n${control}")
  execute_process(COMMAND chmod -R u=rwX,go=rX "${directory}" COMMAND_ERROR_IS_FATAL ANY)
  dpkg_deb(--root-owner-group --build "${directory}" "${file}")
endforeach()
