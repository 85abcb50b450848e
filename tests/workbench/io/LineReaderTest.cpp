// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "io/LineReader.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

using Workbench::LineReader;

namespace {

std::string readingFaultOf(const std::string& path) {
    LineReader lines(path);
    std::string_view line;
    try {
        while (lines.next(line)) {
        }
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
    return "no fault";
}

}  // namespace

TEST(LineReader, TakesLinesUpToItsLimitAndNotAByteMore) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "lines";
    const std::string longest(LineReader::maximumLineLength, 'x');
    VeskarTest::spill(path, "short\n" + longest + "\n" + longest);
    EXPECT_EQ(readingFaultOf(path), "no fault");
    VeskarTest::spill(path, "short\n" + longest + "x\n");
    EXPECT_EQ(readingFaultOf(path), path + ":2: line is longer than 64 MiB");
    VeskarTest::spill(path, longest + "x");
    EXPECT_EQ(readingFaultOf(path), path + ":1: line is longer than 64 MiB");
}
