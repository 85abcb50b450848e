// SPDX-License-Identifier: Apache-2.0
// The parts of an error and its message.
#include <veskar-host/InputError.h>
#include <veskar-host/Installation.h>
#include <veskar-host/SensorFrame.h>

#include "support/TemporaryDirectory.h"

#include <fstream>
#include <string>

#include <gtest/gtest.h>

using Veskar::Host::InputError;

namespace {

void expectParts(const InputError& error, const std::string& place, const std::string& key,
                 const std::string& reason) {
    EXPECT_EQ(error.place(), place);
    EXPECT_EQ(error.key(), key);
    EXPECT_EQ(error.reason(), reason);
}

InputError faultOfFrame(const std::string& text) {
    try {
        Veskar::Host::parseSensorFrame(text);
    } catch (const InputError& error) {
        return error;
    }
    return InputError("no fault");
}

}  // namespace

TEST(InputError, HasAReasonAndPerhapsAKeyAndAPlace) {
    const InputError plain("the disk is full: 7 bytes left");
    EXPECT_STREQ(plain.what(), "the disk is full: 7 bytes left");
    expectParts(plain, "", "", "the disk is full: 7 bytes left");

    const InputError ofKey("camera.fov", "missing");
    EXPECT_STREQ(ofKey.what(), "camera.fov: missing");
    expectParts(ofKey, "", "camera.fov", "missing");

    const InputError ofLine("walk.jsonl:1", ofKey);
    EXPECT_STREQ(ofLine.what(), "walk.jsonl:1: camera.fov: missing");
    expectParts(ofLine, "walk.jsonl:1", "camera.fov", "missing");

    const InputError ofOption("--set", ofLine);
    EXPECT_STREQ(ofOption.what(), "--set: walk.jsonl:1: camera.fov: missing");
    expectParts(ofOption, "--set: walk.jsonl:1", "camera.fov", "missing");
}

TEST(InputError, OfAReaderHasTheKeyEvenWithBlanksAndColons) {
    expectParts(faultOfFrame(R"({"source":"radar","time":1,"tracks":[{"id":1,"a: b":2}]})"), "",
                "tracks[0].a: b", "unknown key");
    expectParts(faultOfFrame(R"({"source":"radar","time":1,"tracks":[{"id":1}]})"), "",
                "tracks[0].range", "missing");
    expectParts(faultOfFrame(R"({"source":"radar","time":1,"tracks":[7]})"), "", "tracks[0]",
                "expected an object, found a number");
    expectParts(faultOfFrame(R"({"source":"radar","time":2,"received":1,"tracks":[]})"), "",
                "received", "1 is before the time of the frame, 2");
    expectParts(faultOfFrame("[]"), "", "", "expected an object, found an array");
}

TEST(InputError, OfAFileHasItsPlace) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("installation.json");
    std::ofstream(path) << "{\"camera\":{}}";
    try {
        Veskar::Host::Installation::parse(path);
        FAIL() << "a camera without members";
    } catch (const InputError& error) {
        expectParts(error, path, "camera.bdc", "missing");
    }
}
