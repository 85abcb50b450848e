# SPDX-License-Identifier: Apache-2.0
# Components: runtime (the library), dev (headers, CMake package, pkg-config, examples), hostruntime
# and hostdev (the same of the library for hosts), tools (the programs, configurations, schemas), doc
# (the pages).
include(CMakePackageConfigHelpers)

set(VESKAR_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/veskar")

install(
  TARGETS veskar
  EXPORT veskar-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT dev)
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/include/veskar" "${PROJECT_BINARY_DIR}/include/veskar"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
  COMPONENT dev
  FILES_MATCHING PATTERN "*.h")
install(
  EXPORT veskar-targets
  NAMESPACE veskar::
  DESTINATION "${VESKAR_CMAKE_DIR}"
  COMPONENT dev)

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/veskar-config.cmake.in"
                              "${PROJECT_BINARY_DIR}/veskar-config.cmake"
                              INSTALL_DESTINATION "${VESKAR_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/veskar-config-version.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/veskar-config.cmake"
        "${PROJECT_BINARY_DIR}/veskar-config-version.cmake"
  DESTINATION "${VESKAR_CMAKE_DIR}"
  COMPONENT dev)

# Libraries that users of the static library link, too, and their preprocessor flags.
set(VESKAR_PC_REQUIRES "eigen3")
set(VESKAR_PC_STATIC_CFLAGS "")
set(VESKAR_HOST_PC_STATIC_CFLAGS "")
if(VESKAR_STATIC)
  string(APPEND VESKAR_PC_REQUIRES "\nRequires.private: jansson libsystemd glib-2.0")
  set(VESKAR_PC_STATIC_CFLAGS " -DVESKAR_STATIC_DEFINE")
  set(VESKAR_HOST_PC_STATIC_CFLAGS " -DVESKAR_HOST_STATIC_DEFINE")
endif()
file(RELATIVE_PATH VESKAR_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" VESKAR_PC_TO_PREFIX "${VESKAR_PC_TO_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/veskar.pc.in" "${PROJECT_BINARY_DIR}/veskar.pc" @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/veskar.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT dev)

if(TARGET veskar_host)
  install(
    TARGETS veskar_host
    EXPORT veskar-host-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT hostruntime NAMELINK_COMPONENT hostdev
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT hostdev)
  veskar_install_rpath(veskar_host "${CMAKE_INSTALL_LIBDIR}" hostruntime)
  install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/include/veskar-host"
              "${PROJECT_BINARY_DIR}/include/veskar-host"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
    COMPONENT hostdev
    FILES_MATCHING PATTERN "*.h")
  install(
    EXPORT veskar-host-targets
    NAMESPACE veskar::
    DESTINATION "${VESKAR_CMAKE_DIR}"
    COMPONENT hostdev)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/veskar-host.pc.in"
                 "${PROJECT_BINARY_DIR}/veskar-host.pc" @ONLY)
  install(
    FILES "${PROJECT_BINARY_DIR}/veskar-host.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT hostdev)
endif()

install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/config/"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/veskar/config"
  COMPONENT tools)
file(GLOB schemas CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/workbench/*/schema/*.json"
     "${PROJECT_SOURCE_DIR}/live/*/schema/*.json")
install(
  FILES ${schemas}
  DESTINATION "${CMAKE_INSTALL_DATADIR}/veskar/schema"
  COMPONENT tools)

install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/examples"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT dev)
install(
  FILES "${PROJECT_SOURCE_DIR}/README.md"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT doc)
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/docs"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT doc
  FILES_MATCHING
  PATTERN "*.md"
  PATTERN "*.png"
  PATTERN "snippets" EXCLUDE)
