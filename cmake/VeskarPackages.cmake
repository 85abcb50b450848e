# SPDX-License-Identifier: Apache-2.0
# Debian packages: `cpack -B DIRECTORY` in a build directory, or scripts/package for all that is
# shipped. One package per component: libveskar1 (runtime), libveskar-dev (dev), veskar-tools
# (tools). A package depends on what dpkg-shlibdeps finds in its programs and libraries.
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR veskar)
set(CPACK_PACKAGE_CONTACT "veskar maintainers <maintainers@veskar.invalid>"
    CACHE STRING "Maintainer named in the packages")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "fusion of radar and video tracks")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/VeskarPackagesEnvironment.cmake")
# Read by that file.
set(CPACK_VESKAR_SOURCE_DIR "${PROJECT_SOURCE_DIR}")

set(library_package libveskar${PROJECT_VERSION_MAJOR})
set(dev_package libveskar-dev)
set(tools_package veskar-tools)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "The shared library that a host application on the device links: it fuses the
object tracks of a radar and a video camera into one list of system tracks.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${dev_package})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "Headers, CMake package and pkg-config file for host applications.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${library_package} (= ${PROJECT_VERSION}), libeigen3-dev (>= 3.3)")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_package})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "The command-line program by which fusion is tried and tuned on recordings,
and the configuration to start from.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)

# Where dpkg-shlibdeps looks for libraries: ours has no package yet, the others of a cross build lie
# in its sysroot.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
if(CMAKE_CROSSCOMPILING AND VESKAR_ARCHITECTURE)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${VESKAR_ARCHITECTURE})
  set(CPACK_VESKAR_SYSROOT "${CMAKE_SYSROOT}")
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
       "${CMAKE_SYSROOT}/lib/${VESKAR_TRIPLET}" "${CMAKE_SYSROOT}/usr/lib/${VESKAR_TRIPLET}")
endif()

foreach(component runtime:${library_package} dev:${dev_package} tools:${tools_package})
  string(REPLACE ":" ";" component "${component}")
  list(GET component 0 name)
  list(GET component 1 package)
  install(
    FILES "${PROJECT_SOURCE_DIR}/LICENSE"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}"
    RENAME copyright
    COMPONENT ${name})
endforeach()

include(CPack)
