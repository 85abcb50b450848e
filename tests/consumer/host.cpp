// SPDX-License-Identifier: Apache-2.0
// A host on the library for hosts: two sensors report one person in their own coordinates; checks
// the fused track.
#include <veskar-host/veskar-host.h>

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

using namespace Veskar::Host;

constexpr const char* installation = R"({
  "camera": {"bdc": false, "rotation": {"pitch": 20.0, "yaw": 0.0, "roll": 0.0},
             "position": [0.0, 0.0, 5.0], "resolution": [1920, 1080], "sensorOffset": [0.0, 0.0],
             "imageToRadiansPolynomial": [0.0, 0.7853981633974483, 0.0, 0.0],
             "radiansToImagePolynomial": [0.0, 1.2732395447351628, 0.0, 0.0],
             "fov": [0.7853981633974483, 0.44]},
  "radar": {"position": [0.0, 0.0, 4.6], "rotation": {"pitch": 0.0, "yaw": 0.0, "roll": 0.0},
            "rangeStd": 0.3, "azimuthStd": 1.0, "velocityStd": 0.5},
  "site": {"latitude": 55.7, "longitude": 13.2, "heading": 0.0}})";

SensorFrame radarFrame(double time, double range) {
    RadarReport report;
    report.id = 3;
    report.range = range;
    report.radialSpeed = 1.0;
    return {Veskar::Radar, time, time + 0.02, {report}};
}

SensorFrame videoFrame(double time, const Projection& camera, double distance) {
    const Eigen::Vector2d foot = camera.position({distance, 0.0, 0.0});
    VideoReport report;
    report.id = 7;
    report.box = {foot[0] - 0.02, foot[1], foot[0] + 0.02, foot[1] + 0.2};
    report.labels.objectClass = {"human", 0.9};
    return {Veskar::VideoObject, time, time + 0.01, {report}};
}

bool check(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "host_consumer: " << what << '\n';
    }
    return holds;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: host_consumer FOLDER\n";
        return EXIT_FAILURE;
    }
    const std::string recording = std::string(argv[1]) + "/recording.jsonl";
    const Installation device = Installation::parseString(installation);
    const Projection camera(device.camera.build());
    FusedFrame last;
    FusionPipeline pipeline(device, Veskar::Config::defaults(),
                            [&last](const FusedFrame& frame) { last = frame; });
    {
        FrameRecorder recorder(recording, device);
        for (int i = 0; i < 20; ++i) {
            const double time = 1000.0 + 0.1 * i;
            const double distance = 20.0 + 0.1 * i;
            for (const SensorFrame& frame : {videoFrame(time, camera, distance),
                                             radarFrame(time, std::hypot(distance, 4.6))}) {
                recorder.write(frame);
                pipeline.push(frame);
            }
        }
    }
    bool good = check(last.tracks.size() == 1, "not exactly one fused track");
    if (good) {
        const FusedTrack& person = last.tracks.front();
        good &= check(person.confirmed && person.sensors.size() == 2, "not fed by both sensors");
        good &= check(person.ground && std::abs(person.ground->position[0] - 21.9) < 1.0,
                      "not where the person is");
        good &= check(person.geo && person.geo->latitude > 55.7, "not north of the device");
    }
    good &= check(toJsonLine(last).find("\"geo\"") != std::string::npos, "no position in the line");
    good &= check(Installation::parse(recording).site.has_value(), "the recording has no site");
    try {
        parseSensorFrame("{\"source\":\"video\"}");
        good = check(false, "half a frame was read");
    } catch (const InputError&) {
        // The exception crosses the library boundary.
    }
    if (good) {
        std::cout << "host_consumer: one confirmed person, seen by both sensors\n";
    }
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
