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
    # The emulator does not know the socket option by which the test asks for the interface.
    "ListeningSocketTest.ListensAtAnInterface"
    # Judge the running program beside a broker and sensors that report at their pace, which an
    # emulated program does not keep up with. LiveProgram and PublishProgram run it, too.
    "BrokerFault.*"
    "GuardedSite.*"
    "InputFault.*"
    "LiveEnd.*"
    "LiveFormats.*"
    "LiveStatus.*"
    "OutputFault.*"
    # Evaluate a crowd four times each. scripts/test-arm compares the fusion itself, to the last bit.
    "RulesInACrowd.*")
