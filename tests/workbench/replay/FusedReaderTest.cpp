// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "FusedText.h"
#include "Process.h"
#include "replay/FusedReader.h"

#include <cmath>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;
using testing::StartsWith;
using Veskar::Host::InputError;
using VeskarTest::dataFile;
using VeskarTest::slurp;
using VeskarTest::spill;
using Workbench::FusedReader;

namespace {

class FusedReaderFaults : public testing::Test {
protected:
    /// @return the error of a file with this second line
    std::string faultOf(const std::string& line) {
        const std::string golden = slurp(dataFile("tiny.fused.jsonl"));
        spill(directory / "fused", golden.substr(0, golden.find('\n') + 1) + line + "\n");
        FusedReader reader(directory / "fused");
        try {
            while (reader.next()) {
            }
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

    /// @return the error of a file with this first line
    std::string headerFaultOf(const std::string& line) {
        spill(directory / "fused", line);
        try {
            const FusedReader reader(directory / "fused");
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

    VeskarTest::TemporaryDirectory directory;
};

}  // namespace

TEST(FusedReader, ReadsEverythingThatIsWritten) {
    const std::string recording =
        VeskarTest::veskar({"simulate", dataFile("tiny.scenario.json")}).output;
    const std::string fused = VeskarTest::veskar({"replay", "-", "--tags"}, recording).output;
    const VeskarTest::TemporaryDirectory directory;
    spill(directory / "fused", fused);
    FusedReader reader(directory / "fused");
    std::istringstream lines(fused);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(reader.header().name, "tiny");
    EXPECT_EQ(nlohmann::json::parse(reader.header().configuration),
              nlohmann::json::parse(line)["configuration"]);
    int frames = 0;
    while (const auto frame = reader.next()) {
        ASSERT_TRUE(std::getline(lines, line));
        ASSERT_EQ(VeskarTest::fusedLine(*frame), line + "\n");
        ++frames;
    }
    EXPECT_GT(frames, 30);
    ASSERT_TRUE(reader.digests());
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_EQ(Workbench::closingLine(*reader.digests()), line + "\n");
    EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(FusedReaderFaults, WhatIsNullIsNoNumber) {
    const std::string golden = slurp(dataFile("tiny.fused.jsonl"));
    spill(directory / "fused",
          golden.substr(0, golden.find('\n') + 1) +
              R"({"source":"radar","time":1,"received":2,"tracks":[{"id":4,"confirmed":true,)"
              R"("probability":null,"image":[null,0.5],"imageRate":[0,0],"range":null,)"
              R"("rangeRate":0,"box":{"left":null,"bottom":0,"right":1,"top":2},"age":0,)"
              R"("sensors":[]}]})");
    FusedReader reader(directory / "fused");
    const auto frame = reader.next();
    ASSERT_TRUE(frame);
    const Workbench::FusedTrack& track = frame->tracks.at(0);
    EXPECT_TRUE(std::isnan(track.probability));
    EXPECT_TRUE(std::isnan(track.image[0]));
    EXPECT_EQ(track.image[1], 0.5);
    EXPECT_TRUE(std::isnan(track.range));
    EXPECT_TRUE(std::isnan(track.box.left));
    EXPECT_FALSE(track.ground);
}

TEST_F(FusedReaderFaults, SayFileLineAndPlace) {
    EXPECT_THAT(faultOf(R"({"source":"lidar","time":1,"received":1,"tracks":[]})"),
                StartsWith(directory / "fused" + ":2: source: \"lidar\" is not video or radar"));
    EXPECT_THAT(faultOf(R"({"source":"radar","time":1,"received":1,"tracks":[{"id":1}]})"),
                StartsWith(directory / "fused" + ":2: tracks[0].probability: missing"));
    EXPECT_THAT(faultOf(R"({"source":"radar","time":1,"received":1,"tracks":[{"id":1,)"
                        R"("probability":1,"image":[1]}]})"),
                HasSubstr("tracks[0].image: expected 2 numbers, found 1"));
    EXPECT_THAT(faultOf(R"({"source":"radar","time":1,)"), HasSubstr(":2: column "));
    EXPECT_THAT(faultOf(R"({"source":"radar","time":NaN,"received":1,"tracks":[]})"),
                HasSubstr(":2: column "));
}

TEST_F(FusedReaderFaults, RefuseRepeatedIds) {
    const std::string track =
        R"({"id":4,"confirmed":true,"probability":1,"image":[0,0],"imageRate":[0,0],"range":9,)"
        R"("rangeRate":0,"box":{"left":0,"bottom":0,"right":1,"top":2},"age":0,"sensors":[]})";
    const std::string start = R"({"source":"radar","time":1,"received":1,"tracks":[)";
    EXPECT_EQ(faultOf(start + track + "]}"), "");
    EXPECT_THAT(faultOf(start + track + "," + track + "]}"),
                HasSubstr(":2: tracks[1].id: 4 occurs twice in the frame"));
}

TEST_F(FusedReaderFaults, RefuseFramesThatDoNotStandInTheOrderOfTheirArrival) {
    const std::string first = R"({"source":"video","time":1,"received":1.5,"tracks":[]})";
    EXPECT_EQ(faultOf(first + "\n" + R"({"source":"video","time":0.5,"received":1.5,"tracks":[]})"),
              "");
    EXPECT_THAT(
        faultOf(first + "\n" + R"({"source":"video","time":2,"received":1.25,"tracks":[]})"),
        HasSubstr(":3: received: 1.25 is before 1.5, when the frame before was received"));
}

TEST_F(FusedReaderFaults, NothingStandsBehindTheClosingLine) {
    const std::string frame = R"({"source":"video","time":1,"received":1.5,"tracks":[]})";
    const std::string closing = R"({"digests":{"recording":"1","camera":"2","configuration":"3"}})";
    EXPECT_EQ(faultOf(frame + "\n" + closing), "");
    EXPECT_THAT(faultOf(closing + "\n" + frame), HasSubstr(":3: stands behind the closing line"));
    EXPECT_THAT(faultOf(closing + "\n" + closing), HasSubstr(":3: stands behind the closing line"));
    EXPECT_THAT(faultOf(R"({"digests":{"recording":"1","camera":"2"}})"),
                HasSubstr(":2: digests.configuration: missing"));
    EXPECT_THAT(faultOf(R"({"digests":"1"})"), HasSubstr(":2: digests: expected an object"));
}

TEST_F(FusedReaderFaults, NameWhatIsNoFusedFile) {
    EXPECT_THAT(headerFaultOf(""), HasSubstr(":1: the file is empty"));
    EXPECT_THAT(headerFaultOf("time,received,source\n"),
                HasSubstr(":1: no header of fused tracks"));
    EXPECT_THAT(headerFaultOf(R"({"format":"veskar-recording"})"),
                HasSubstr("expected \"veskar-fused\", found \"veskar-recording\""));
    EXPECT_THAT(headerFaultOf(R"({"format":"veskar-fused","version":2})"),
                HasSubstr("version 2 is not supported"));
}
