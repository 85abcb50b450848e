// SPDX-License-Identifier: Apache-2.0
// Sensor frames as lines of JSON.
#include <veskar-host/InputError.h>
#include <veskar-host/SensorFrame.h>

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

using namespace Veskar::Host;

namespace {

std::string faultOfFrame(const std::string& text) {
    try {
        parseSensorFrame(text);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

VideoReport videoReport() {
    VideoReport report;
    report.id = -5;
    report.coasting = 0.25;
    report.confirmed = false;
    report.box = {-0.5, -0.25, 0.125, 0.75};
    report.velocity = Eigen::Vector2d(0.0625, -0.5);
    report.age = 3.5;
    report.labels.objectClass = {"human", 0.75};
    report.labels.lowerClothingColor = {"rosé \"\n", 0.5};
    return report;
}

RadarReport radarReport() {
    RadarReport report;
    report.id = 2147483647;
    report.range = 12.5;
    report.azimuth = -7.5;
    report.speed = 1.5;
    report.direction = 180.0;
    return report;
}

ReadyEstimate readyEstimate() {
    ReadyEstimate report;
    report.id = 9;
    report.state << 0.5, -0.25, 0.125, 1.5, 20.0, -3.0;
    report.covariance = Eigen::Matrix<double, 6, 6>::Identity();
    report.covariance(0, 4) = report.covariance(4, 0) = 0.375;
    report.box = ImageBox{-1.0, -1.0, 1.0, 1.0};
    return report;
}

}  // namespace

TEST(SensorFrame, ReadsBackAsItWasWritten) {
    const std::vector<SensorFrame> frames{
        {Veskar::VideoObject, 1.0, 1.5, {videoReport(), readyEstimate()}},
        {Veskar::Radar, 2.0, 2.0, {radarReport()}},
        {Veskar::Radar, -3.25, 4e9, {}}};
    for (const SensorFrame& frame : frames) {
        const std::string line = toJsonLine(frame);
        const SensorFrame back = parseSensorFrame(line);
        EXPECT_EQ(back.source, frame.source);
        EXPECT_EQ(back.time, frame.time);
        EXPECT_EQ(back.received, frame.received);
        ASSERT_EQ(back.tracks.size(), frame.tracks.size());
        EXPECT_EQ(toJsonLine(back), line);
    }
    const SensorFrame video = parseSensorFrame(toJsonLine(frames[0]));
    const auto& report = std::get<VideoReport>(video.tracks[0]);
    EXPECT_EQ(report.velocity, videoReport().velocity);
    EXPECT_EQ(report.labels.lowerClothingColor.name, "rosé \"\n");
    EXPECT_FALSE(report.confirmed);
    const auto& ready = std::get<ReadyEstimate>(video.tracks[1]);
    EXPECT_EQ(ready.state, readyEstimate().state);
    EXPECT_EQ(ready.covariance, readyEstimate().covariance);
}

TEST(SensorFrame, SaysWhatIsWrong) {
    const std::string box = R"("box":{"left":0,"bottom":0,"right":1,"top":1})";
    const std::vector<std::pair<std::string, std::string>> faults{
        {R"({"source":"truth","time":1,"objects":[]})", "source: \"truth\" is not video or radar"},
        {R"({"source":"radar","tracks":[]})", "time: missing"},
        {R"({"source":"radar","time":2,"received":1,"tracks":[]})",
         "received: 1 is before the time of the frame, 2"},
        {R"({"source":"radar","time":1,"tracks":[],"extra":1})", "extra: unknown key"},
        {R"({"source":"radar","time":1,"tracks":[{"id":1,"range":"far"}]})",
         "tracks[0].range: expected a number, found a string"},
        {R"({"source":"radar","time":1,"tracks":[{"id":1,"range":1,"azimuth":400}]})",
         "tracks[0].azimuth: 400 is not between -360 and 360"},
        {R"({"source":"radar","time":1,"tracks":[{"id":1,"range":1,"azimuth":0}]})",
         "tracks[0].radialSpeed: missing; a radar track has a speed and direction or a radial "
         "speed"},
        {R"({"source":"video","time":1,"tracks":[{"id":4294967296,)" + box + "}]}",
         "tracks[0].id: does not fit into 32 bits"},
        {R"({"source":"video","time":1,"tracks":[{"id":1.5,)" + box + "}]}",
         "tracks[0].id: expected an integer, found a fraction"},
        {R"({"source":"video","time":1,"tracks":[{"id":1,)" + box + R"(},{"id":1,)" + box + "}]}",
         "tracks[1].id: 1 occurs twice in the frame"},
        {R"({"source":"video","time":1,"tracks":[{"id":1,"box":{"left":0,"bottom":1,"right":1,"top":0}}]})",
         "tracks[0].box.top: is below bottom"},
        {"[]", "expected an object, found an array"}};
    for (const auto& [text, fault] : faults) {
        EXPECT_EQ(faultOfFrame(text), fault) << text;
    }
    EXPECT_EQ(faultOfFrame("{\"source\":").substr(0, 7), "line 1,");
    EXPECT_EQ(
        faultOfFrame(R"({"source":"radar","source":"video","time":1,"tracks":[]})").substr(0, 7),
        "line 1,");
}
