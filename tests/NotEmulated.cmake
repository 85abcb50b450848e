# SPDX-License-Identifier: Apache-2.0
# Tests that a cross build leaves out: what they do cannot be done by a process that an emulator runs.
set(VESKAR_NOT_EMULATED
    # Each starts its own program again. The kernel starts an ARM program only through a handler for
    # foreign programs (binfmt_misc), which root would have to give it.
    "ProcessWideDeathTest.*"
    # Leaves the process one file descriptor; the emulator, a part of that process, needs some itself.
    "PropertyClient/*.LogsALoopThatCannotBeMade")
