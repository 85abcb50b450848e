// SPDX-License-Identifier: Apache-2.0
// The program's outputs conform to the published schemas, checked by an independent validator.
#include "Process.h"
#include "Programs.h"
#include "SourceDirectory.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::string schema(const std::string& name) {
    return std::string(VESKAR_SOURCE_DIR) + "/workbench/recording/schema/" + name + ".schema.json";
}

VeskarTest::Outcome validate(const std::string& schemaName, const std::string& lines) {
    return VeskarTest::run(
        {PYTHON_PROGRAM, VeskarTest::dataFile("validate_lines.py"), schema(schemaName)}, lines);
}

std::string simulated() {
    return VeskarTest::veskar({"simulate", VeskarTest::dataFile("tiny.scenario.json")}).output;
}

std::string boats() {
    return VeskarTest::veskar({"import", "autoferry", VeskarTest::dataFile("boats.detections.json"),
                               VeskarTest::dataFile("boats.groundTruth.json")})
        .output;
}

void expectValid(const std::string& schemaName, const std::string& lines) {
    const VeskarTest::Outcome outcome = validate(schemaName, lines);
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
}

}  // namespace

TEST(Schema, SimulatedRecordingsKeepIt) {
    expectValid("recording", simulated());
}

TEST(Schema, ImportedRecordingsKeepIt) {
    expectValid("recording", boats());
    expectValid("recording",
                VeskarTest::veskar({"import", "kitti", VeskarTest::dataFile("kitti.labels.txt"),
                                    VeskarTest::dataFile("kitti.calibration.txt")})
                    .output);
}

TEST(Schema, FusedTracksKeepIt) {
    expectValid("fused", VeskarTest::veskar({"replay", "-", "--tags"}, simulated()).output);
    expectValid("fused", VeskarTest::veskar({"replay", "-"}, boats()).output);
    expectValid("fused",
                VeskarTest::veskar({"replay", "-", "--set", "radarGain=2"}, simulated()).output);
}

TEST(Schema, RefusesWhatTheReaderRefuses) {
    const std::string recording = simulated();
    const std::string header = recording.substr(0, recording.find('\n') + 1);
    for (
        const char* line :
        {R"({"source":"lidar","time":1,"tracks":[]})", R"({"source":"video","tracks":[]})",
         R"({"source":"radar","time":1,"tracks":[{"id":1,"range":2,"azimuth":3}]})",
         R"({"source":"radar","time":1,"tracks":[{"id":1,"range":-2,"azimuth":3,"radialSpeed":0}]})",
         R"({"source":"video","time":1,"tracks":[{"id":1,"state":[1,2,3],"covariance":[1]}]})",
         R"({"source":"video","time":1,"tracks":[],"extra":1})",
         R"({"format":"veskar-recording","version":2})"}) {
        EXPECT_EQ(validate("recording", header + line + "\n").status, 1) << line;
        EXPECT_EQ(VeskarTest::veskar({"replay", "-"}, header + line + "\n").status, 2) << line;
    }
}
