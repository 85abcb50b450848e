# SPDX-License-Identifier: Apache-2.0
# Tests excluded from cross builds, because they do not work in an emulated process or take minutes in
# one.
set(VESKAR_NOT_EMULATED
    # Each restarts its own program. The kernel starts an ARM program only through a handler for
    # foreign binaries (binfmt_misc), which root would have to install.
    "ProcessWideDeathTest.*"
    # Leaves the process one file descriptor; the emulator, a part of that process, needs some
    # itself.
    "PropertyClient/*.LogsALoopThatCannotBeMade"
    # Evaluate a crowd four times each. scripts/test-arm compares the fusion itself, to the last bit.
    "RulesInACrowd.*")
