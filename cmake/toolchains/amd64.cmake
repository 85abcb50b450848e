# SPDX-License-Identifier: Apache-2.0
# 64-bit PC, using a sysroot instead of this machine's libraries.
set(VESKAR_ARCHITECTURE amd64)
set(VESKAR_TRIPLET x86_64-linux-gnu)
set(VESKAR_EMULATOR qemu-x86_64)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
