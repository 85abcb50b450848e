// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/Installation.h>

#include "host/TestInstallation.h"
#include "host/installation/RecordingHeader.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Veskar::Host::InputError;
using Veskar::Host::Installation;

namespace {

std::string headerLine() {
    Veskar::Host::Internal::RecordingHeader header;
    static_cast<Installation&>(header) = VeskarTest::testInstallation();
    header.site = Veskar::Host::Site{55.7, 13.25, 140.0};
    header.camera.fieldOfView[1] = 0.1 + 0.2;  // needs all 17 digits
    return toJsonLine(header);
}

/// The members of the header that belong to an installation.
std::string plainObject() {
    const std::string line = headerLine();
    const std::size_t camera = line.find("\"camera\"");
    return "{" + line.substr(camera, line.find(",\"truth\"") - camera) + "}";
}

void expectTheInstallation(const Installation& found) {
    const Installation wanted = VeskarTest::testInstallation();
    EXPECT_EQ(found.camera.mounting.position, wanted.camera.mounting.position);
    EXPECT_EQ(found.camera.mounting.pitch, wanted.camera.mounting.pitch);
    EXPECT_EQ(found.camera.imageToRadians, wanted.camera.imageToRadians);
    EXPECT_EQ(found.camera.radiansToImage, wanted.camera.radiansToImage);
    EXPECT_EQ(found.camera.fieldOfView[1], 0.1 + 0.2);
    EXPECT_EQ(found.camera.resolution, wanted.camera.resolution);
    EXPECT_EQ(found.radar.mounting.position, wanted.radar.mounting.position);
    EXPECT_EQ(found.radar.azimuthStd, wanted.radar.azimuthStd);
    ASSERT_TRUE(found.site);
    EXPECT_EQ(found.site->longitude, 13.25);
}

std::string faultOfInstallation(const std::string& text) {
    try {
        Installation::parseString(text);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
}

}  // namespace

TEST(Installation, IsReadFromTheHeaderOfARecording) {
    expectTheInstallation(Installation::parseString(headerLine()));
    expectTheInstallation(Installation::parseString(
        headerLine() + "{\"source\":\"video\",\"time\":1,\"tracks\":[]}\n"));
}

TEST(Installation, IsReadFromAnObjectOfItsOwn) {
    expectTheInstallation(Installation::parseString(plainObject()));
    EXPECT_EQ(faultOfInstallation(replaced(plainObject(), "\"site\"", "\"sight\"")),
              "sight: unknown key");
}

TEST(Installation, IsReadFromAFile) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("recording.jsonl");
    std::ofstream(path) << headerLine() << "{\"source\":\"video\",\"time\":1,\"tracks\":[]}\n";
    expectTheInstallation(Installation::parse(path));
    std::ofstream(path) << replaced(headerLine(), "\"rangeStd\":0.3", "\"rangeStd\":0");
    try {
        Installation::parse(path);
        FAIL() << "a radar without noise";
    } catch (const InputError& error) {
        EXPECT_EQ(error.what(), path + ": radar.rangeStd: 0 is below 1e-06");
    }
    EXPECT_THROW(Installation::parse(directory.file("none")), InputError);
}

TEST(Installation, SaysWhatIsWrong) {
    EXPECT_EQ(faultOfInstallation("{\"camera\":{}}"), "camera.bdc: missing");
    EXPECT_EQ(faultOfInstallation("[]"), "expected an object, found an array");
    EXPECT_EQ(faultOfInstallation("{\"camera\":1,\"camera\":2}").substr(0, 14), "line 1, column");
    EXPECT_EQ(faultOfInstallation(replaced(headerLine(), "veskar-recording", "veskar-fused")),
              "format: expected \"veskar-recording\", found \"veskar-fused\"");
    EXPECT_EQ(faultOfInstallation(replaced(headerLine(), "\"version\":1", "\"version\":2")),
              "version: version 2 is not supported, this program reads version 1");
    EXPECT_EQ(faultOfInstallation(replaced(headerLine(), "[0.1,-0.3,4.6]", "[0.1,-0.3,0]")),
              "radar.position: the height above ground, the third number, must be positive");
    EXPECT_EQ(faultOfInstallation(replaced(headerLine(), "\"fov\":[0.78", "\"fov\":[-0.78")),
              "camera.fov: the horizontal half-angle, the first number, must be positive");
    EXPECT_EQ(faultOfInstallation(
                  replaced(headerLine(), "\"truth\"", "\"seed\":9223372036854775807,\"truth\"")),
              "");
    EXPECT_THAT(faultOfInstallation(
                    replaced(headerLine(), "\"truth\"", "\"seed\":9223372036854775808,\"truth\"")),
                testing::HasSubstr("integer"));
}

TEST(Installation, HasNothingBehindAnObjectOfItsOwn) {
    EXPECT_EQ(faultOfInstallation(plainObject() + " \n"), "");
    EXPECT_THAT(faultOfInstallation(plainObject() + "\n{}"), testing::StartsWith("line 2, column"));
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("installation.json");
    std::ofstream(path) << plainObject() << '\n';
    expectTheInstallation(Installation::parse(path));
    std::ofstream(path) << plainObject() << "\n,";
    try {
        Installation::parse(path);
        FAIL() << "text behind the object";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), testing::StartsWith(path + ": line 2, column"));
    }
}
