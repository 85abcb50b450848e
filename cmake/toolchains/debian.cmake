# SPDX-License-Identifier: Apache-2.0
# Shared by these toolchains: Debian's compiler for VESKAR_TRIPLET, everything else from a sysroot,
# and an emulator for CTest.
#
# The environment variable VESKAR_SYSROOT names the sysroot; by default it is the one made by
# scripts/sysroot.
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

# Suppresses the compiler's note, at every use of Eigen's types, about the calling convention before
# GCC 7.1.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
