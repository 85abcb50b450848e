# SPDX-License-Identifier: Apache-2.0
# 64-bit ARM: ARMv8-A.
set(VESKAR_ARCHITECTURE arm64)
set(VESKAR_TRIPLET aarch64-linux-gnu)
set(VESKAR_EMULATOR qemu-aarch64)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
