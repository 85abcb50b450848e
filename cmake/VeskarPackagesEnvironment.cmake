# SPDX-License-Identifier: Apache-2.0
# Read by CPack before packing: sets the environment of the programs that it runs.

# Time stamps in the packages are that of the commit, so that builds are reproducible.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND git -C "${CPACK_VESKAR_SOURCE_DIR}" log -1 --format=%ct
    OUTPUT_VARIABLE commit_time
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(commit_time)
    set(ENV{SOURCE_DATE_EPOCH} "${commit_time}")
  endif()
endif()

# For dpkg-shlibdeps: the architecture, and the database of the sysroot's packages.
if(CPACK_VESKAR_SYSROOT)
  set(ENV{DEB_HOST_ARCH} "${CPACK_DEBIAN_PACKAGE_ARCHITECTURE}")
  set(ENV{DPKG_ADMINDIR} "${CPACK_VESKAR_SYSROOT}/var/lib/dpkg")
endif()
