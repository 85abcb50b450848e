// SPDX-License-Identifier: Apache-2.0
// The program at a path that would make it the analytics application.
#include "Process.h"
#include "Programs.h"
#include "support/DatagramReceiver.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace VeskarTest;

// A device's calibration service must not be fed with data recorded elsewhere. This recording
// contains samples that would be used.
TEST(ProgramBesideTheHost, CalibratesNothing) {
    const std::filesystem::path program(VESKAR_PROGRAM);
    // Next to the program's own folder, so that it finds its library.
    const std::filesystem::path folder =
        program.parent_path().parent_path() / ("quandrelwatcher-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    const std::filesystem::path beside = folder / program.filename();
    std::filesystem::create_hard_link(program, beside);

    const SocketPath path("/tmp/autocalibration.sock");
    DatagramReceiver receiver(path.get());
    const Outcome outcome = run({beside.string(), "replay", dataFile("tiny.jsonl")});
    std::filesystem::remove_all(folder);
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(receiver.receive(), testing::IsEmpty());
}
