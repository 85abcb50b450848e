# SPDX-License-Identifier: Apache-2.0
# 32-bit ARM: ARMv7-A with floating-point registers.
set(VESKAR_ARCHITECTURE armhf)
set(VESKAR_TRIPLET arm-linux-gnueabihf)
set(VESKAR_EMULATOR qemu-arm)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
include("${CMAKE_CURRENT_LIST_DIR}/debian.cmake")
