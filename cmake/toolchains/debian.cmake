# SPDX-License-Identifier: Apache-2.0
# What the toolchains here share: Debian's compiler for VESKAR_TRIPLET, all else out of a sysroot,
# and an emulator with which CTest runs what was built.
#
# The environment variable VESKAR_SYSROOT names the sysroot; without it, it is where scripts/sysroot
# makes it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_CXX_COMPILER ${VESKAR_TRIPLET}-g++)

if(DEFINED ENV{VESKAR_SYSROOT})
  set(CMAKE_SYSROOT "$ENV{VESKAR_SYSROOT}")
else()
  get_filename_component(
    CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot/${VESKAR_ARCHITECTURE}" ABSOLUTE)
endif()
if(NOT IS_DIRECTORY "${CMAKE_SYSROOT}/usr/include")
  message(FATAL_ERROR "No sysroot in ${CMAKE_SYSROOT}: scripts/sysroot ${VESKAR_ARCHITECTURE}")
endif()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${CMAKE_SYSROOT}/usr/lib/${VESKAR_TRIPLET}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR ${VESKAR_EMULATOR};-L;${CMAKE_SYSROOT})

# The compiler would note on every use of Eigen's types that GCC before 7.1 passed them otherwise.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
