# SPDX-License-Identifier: Apache-2.0
# Debian packages: `cpack -B DIRECTORY` in a build directory, or scripts/package for all that is
# shipped. One package per component: libveskar1 (runtime), libveskar-dev (dev), libveskar-host1
# (hostruntime), libveskar-host-dev (hostdev), veskar-tools (tools), veskar-doc (doc), and
# python3-veskar (python) where that is built. A package
# depends on what dpkg-shlibdeps finds in its programs and libraries.
# The version of the packages is that of the newest entry of their changelog: the project's, with
# "~..." behind it until that is released (which sorts before it), and a revision that begins with
# 0, as that of packages which are not Debian's own.
set(changelog "${PROJECT_SOURCE_DIR}/packaging/changelog")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${changelog}")
file(STRINGS "${changelog}" newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^veskar \\((([0-9.]+)(~[a-z0-9.]+)?)-([a-z0-9.]+)\\) "
   OR NOT CMAKE_MATCH_2 VERSION_EQUAL PROJECT_VERSION)
  message(FATAL_ERROR "${changelog} does not begin with a version of ${PROJECT_VERSION}: ${newest}")
endif()
set(CPACK_PACKAGE_VERSION ${CMAKE_MATCH_1})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_4})
set(this_version "(= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_GENERATOR DEB)
# Each package has its own description, without a common line.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_VENDOR veskar)
set(CPACK_PACKAGE_CONTACT "veskar maintainers <maintainers@veskar.invalid>"
    CACHE STRING "Maintainer named in the packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/VeskarPackagesEnvironment.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/VeskarPackagesStage.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/VeskarPackagesFinish.cmake")
# Used by the files that CPack runs.
set(CPACK_VESKAR_SOURCE_DIR "${PROJECT_SOURCE_DIR}")
set(CPACK_VESKAR_LIVE_MISSING "${VESKAR_LIVE_MISSING}")

set(library_package libveskar${PROJECT_VERSION_MAJOR})
set(dev_package libveskar-dev)
set(host_library_package libveskar-host${PROJECT_VERSION_MAJOR})
set(host_dev_package libveskar-host-dev)
set(tools_package veskar-tools)
set(doc_package veskar-doc)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev hostruntime hostdev tools doc)
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
    "fusion of radar and video tracks - library
The shared library that a host application on the device links: it fuses the
object tracks of a radar and a video camera into one list of system tracks.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/conffiles"
                                               "${PROJECT_SOURCE_DIR}/packaging/triggers")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${dev_package})
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "fusion of radar and video tracks - development files
Headers, CMake package and pkg-config file for host applications, and examples
of them.")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${library_package} ${this_version}, libeigen3-dev (>= 3.3)")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS ${doc_package})

set(CPACK_DEBIAN_HOSTRUNTIME_PACKAGE_NAME ${host_library_package})
set(CPACK_DEBIAN_HOSTRUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_HOSTRUNTIME_DESCRIPTION
    "fusion of radar and video tracks - library for hosts
The shared library that turns the reports of a radar and a video camera, in the
sensors' own terms, into fused tracks with places on the ground.")
set(CPACK_DEBIAN_HOSTRUNTIME_PACKAGE_DEPENDS "${library_package} ${this_version}")
set(CPACK_DEBIAN_HOSTRUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_HOSTRUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers")

set(CPACK_DEBIAN_HOSTDEV_PACKAGE_NAME ${host_dev_package})
set(CPACK_DEBIAN_HOSTDEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_HOSTDEV_DESCRIPTION
    "fusion of radar and video tracks - development files for hosts
Headers, CMake component and pkg-config file of the library for hosts.")
set(CPACK_DEBIAN_HOSTDEV_PACKAGE_DEPENDS
    "${host_library_package} ${this_version}, ${dev_package} ${this_version}")
set(CPACK_DEBIAN_HOSTDEV_PACKAGE_SUGGESTS ${doc_package})

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${tools_package})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "fusion of radar and video tracks - program and service
The command-line program by which fusion is tried and tuned on recordings and
by which sensors are fused live, as a service too, with configurations and
scenarios to start from, and the schemas of its files.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "${library_package} ${this_version}, ${host_library_package} ${this_version}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS ${doc_package})
if(TARGET veskar_live AND NOT VESKAR_LIVE_RTSP_MISSING)
  set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS gstreamer1.0-plugins-good)
endif()
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/tools/postinst"
                                             "${PROJECT_SOURCE_DIR}/packaging/tools/postrm"
                                             "${PROJECT_SOURCE_DIR}/packaging/tools/prerm")

# The module is made for one version of Python.
set(python_package python3-veskar)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ${python_package})
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "fusion of radar and video tracks - Python package
The libraries and the workbench in Python: fusing tracks with NumPy, simulating
and replaying recordings, and judging trackers, with results as data frames.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
    "${library_package} ${this_version}, ${host_library_package} ${this_version}, python3-numpy")
if(TARGET veskar_python)
  math(EXPR next_minor "${Python_VERSION_MINOR} + 1")
  string(APPEND CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
         ", python3 (>= ${Python_VERSION_MAJOR}.${Python_VERSION_MINOR})"
         ", python3 (<< ${Python_VERSION_MAJOR}.${next_minor})")
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS
    "python3-pandas, python3-optuna, python3-scipy, ${tools_package}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SUGGESTS
    "python3-matplotlib, python3-sklearn, python3-psycopg2, ${doc_package}")
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_DOC_PACKAGE_NAME ${doc_package})
set(CPACK_DEBIAN_DOC_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOC_DESCRIPTION
    "fusion of radar and video tracks - documentation
How the library works, how a host is wired to it, what the configuration means,
the formats of the workbench's files, and how good the fusion is.")

# Where dpkg-shlibdeps looks for libraries that belong to no installed package: ours, and those in
# the sysroot of a cross build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src"
                                                "${PROJECT_BINARY_DIR}/host")
if(CMAKE_CROSSCOMPILING AND VESKAR_ARCHITECTURE)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${VESKAR_ARCHITECTURE})
  set(CPACK_VESKAR_SYSROOT "${CMAKE_SYSROOT}")
  list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
       "${CMAKE_SYSROOT}/lib/${VESKAR_TRIPLET}" "${CMAKE_SYSROOT}/usr/lib/${VESKAR_TRIPLET}")
endif()

# COMPONENT:PACKAGE:MULTI-ARCH
set(CPACK_VESKAR_PACKAGES runtime:${library_package}:same dev:${dev_package}:same
                          hostruntime:${host_library_package}:same hostdev:${host_dev_package}:same
                          tools:${tools_package}:foreign doc:${doc_package}:foreign)
if(TARGET veskar_python)
  list(APPEND CPACK_VESKAR_PACKAGES python:${python_package}:no)
endif()
include(CPack)
