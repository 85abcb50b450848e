// SPDX-License-Identifier: Apache-2.0
// A minimal host: loads the installed configuration and camera, fuses two sensors' tracks of one
// person and checks the result.
#include <veskar/AutocalibrationHandler.h>
#include <veskar/Camera.h>
#include <veskar/Config.h>
#include <veskar/DetectionPriority.h>
#include <veskar/Estimation.h>
#include <veskar/FusionModule.h>
#include <veskar/GeoLocation.h>
#include <veskar/HostApplication.h>
#include <veskar/ImagePlane.h>
#include <veskar/JsonNode.h>
#include <veskar/ObjectIdGenerator.h>
#include <veskar/RadarStatus.h>
#include <veskar/SDEventGSource.h>
#include <veskar/SNRBlock.h>
#include <veskar/SceneConditions.h>
#include <veskar/Sensor.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>
#include <veskar/TrackAssociator.h>
#include <veskar/TrackedOdMotionAnalyzer.h>
#include <veskar/VODAnnotationClient.h>
#include <veskar/Version.h>
#include <veskar/Vocabulary.h>
#include <veskar/veskar.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace {

std::shared_ptr<Veskar::Track> report(Veskar::Source source, int id, double time, double u) {
    Veskar::StateVector state;
    state << u, 0.01, -0.2, 0.0, 12.0, 0.0;
    const Veskar::StateMatrix covariance = 0.01 * Veskar::StateMatrix::Identity();
    const std::string unknown = Veskar::Vocabulary::unknown;
    auto track = std::make_shared<Veskar::Track>(state, covariance, time, id, source,
                                                 Veskar::ImagePlaneRange, Veskar::Vocabulary::human,
                                                 0.9, unknown, 0.0, unknown, 0.0, unknown, 0.0);
    track->probability = 2.0;
    return track;
}

bool check(bool holds, const char* what) {
    if (!holds) {
        std::cerr << "consumer: " << what << '\n';
    }
    return holds;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: consumer CONFIG-FOLDER\n";
        return EXIT_FAILURE;
    }
    const std::string folder = argv[1];
    const Veskar::Config config = Veskar::Config::parse(folder + "/fusion.json");
    const Veskar::Camera camera =
        Veskar::Camera::parse(Veskar::JsonNode::fromFile(folder + "/camera.json"));

    double now = 0.0;
    Veskar::FusionModule module(
        config, [&now] { return std::chrono::nanoseconds(static_cast<std::int64_t>(now * 1e9)); });
    for (int frame = 0; frame < 20; ++frame) {
        now = 1.0 + 0.1 * frame;
        const double u = 0.01 * 0.1 * frame;
        module.cycle(Veskar::VideoObject, now, {report(Veskar::VideoObject, 7, now, u)});
        module.cycle(Veskar::Radar, now, {report(Veskar::Radar, 3, now, u)});
    }

    const std::string headers = std::to_string(VESKAR_VERSION_MAJOR) + "." +
                                std::to_string(VESKAR_VERSION_MINOR) + "." +
                                std::to_string(VESKAR_VERSION_PATCH);
    bool good =
        check(headers == Veskar::veskarVersion(), "headers and library do not belong together");
    good &= check(camera.getRangeToTarget(0.0, -0.2, 1.0).range > 0.0, "no range to the ground");
    good &= check(module.systemTracks.size() == 1, "not exactly one system track");
    if (good) {
        const Veskar::SystemTrack& person = *module.systemTracks.front();
        good &= check(person.isConfirmed, "the person is not confirmed");
        good &= check(person.hasTracks(Veskar::Radar) && person.hasTracks(Veskar::VideoObject),
                      "not fed by both sensors");
        good &= check(person.getClassName() == Veskar::Vocabulary::human, "not human");
    }
    if (good) {
        std::cout << "consumer: one confirmed person, seen by both sensors\n";
    }
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
