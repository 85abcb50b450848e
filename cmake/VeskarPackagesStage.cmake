# SPDX-License-Identifier: Apache-2.0
# Run by CPack between installation and packing: adds what only Debian packages contain.
set(stage "${CPACK_TEMPORARY_INSTALL_DIRECTORY}")
set(packaging "${CPACK_VESKAR_SOURCE_DIR}/packaging")

function(compress)
  execute_process(COMMAND gzip -9 --no-name ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(entry IN LISTS CPACK_VESKAR_PACKAGES)
  string(REPLACE ":" ";" entry "${entry}")
  list(POP_FRONT entry component package multi_arch)
  set(directory "${stage}/${component}/usr/share/doc/${package}")
  file(COPY "${packaging}/copyright" DESTINATION "${directory}")
  configure_file("${packaging}/changelog" "${directory}/changelog.Debian" COPYONLY)
  configure_file("${CPACK_VESKAR_SOURCE_DIR}/CHANGELOG.md" "${directory}/changelog" COPYONLY)
  compress("${directory}/changelog.Debian" "${directory}/changelog")
endforeach()

file(GLOB pages "${stage}/tools/usr/share/man/man1/*.1")
if(NOT pages)
  message(FATAL_ERROR "There are no manual pages: install help2man, configure and build again.")
endif()
compress(${pages})

# The host's configuration, which belongs to the administrator: updates do not overwrite it.
file(COPY "${CPACK_VESKAR_SOURCE_DIR}/config/fusion.json"
     DESTINATION "${stage}/runtime/etc/veskar")

# The service of the live program, and where Debian's administrators look for examples.
if(CPACK_VESKAR_LIVE_MISSING)
  message(FATAL_ERROR "${CPACK_VESKAR_LIVE_MISSING}")
endif()
file(COPY "${packaging}/veskar.service" DESTINATION "${stage}/tools/lib/systemd/system")
file(CREATE_LINK ../../veskar/config "${stage}/tools/usr/share/doc/veskar-tools/examples" SYMBOLIC)
