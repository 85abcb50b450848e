# SPDX-License-Identifier: Apache-2.0
# Read by CPack before it packs: what the programs that it calls find in their environment.

# The time stamps in the packages are that of the commit, so that a build can be repeated.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND git -C "${CPACK_VESKAR_SOURCE_DIR}" log -1 --format=%ct
    OUTPUT_VARIABLE commit_time
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(commit_time)
    set(ENV{SOURCE_DATE_EPOCH} "${commit_time}")
  endif()
endif()

# dpkg-shlibdeps: which architecture, and which package a library of the sysroot belongs to.
if(CPACK_VESKAR_SYSROOT)
  set(ENV{DEB_HOST_ARCH} "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
  set(ENV{DPKG_ADMINDIR} "${CPACK_VESKAR_SYSROOT}/var/lib/dpkg")
endif()
