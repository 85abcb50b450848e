// SPDX-License-Identifier: Apache-2.0
// A host of the core library alone: a GLib main loop on the main thread, which receives the changes
// of the device's services, and the fusion on its own thread. One simulated person replaces the
// sensors.
#include <veskar/veskar.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include <glib.h>

namespace {

/// Seconds on the steady clock, the time base of all frames.
double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// A person who walks away from the device, slightly to the right.
struct Person {
    double time;  // seconds
    double walked;

    std::shared_ptr<Veskar::Track> report(Veskar::Source source, int id) const {
        Veskar::StateVector state;
        state << 0.1 + 0.01 * walked, 0.01, -0.3 + 0.02 * walked, 0.02, 20.0 + walked, 1.0;
        const Veskar::StateMatrix covariance = 0.01 * Veskar::StateMatrix::Identity();
        const std::string& unknown = Veskar::Vocabulary::unknown;
        auto track = std::make_shared<Veskar::Track>(
            state, covariance, time, id, source, Veskar::ImagePlaneRange, Veskar::Vocabulary::human,
            0.9, unknown, 0.0, unknown, 0.0, unknown, 0.0);
        track->boundingBox = Eigen::Vector4d(state(0) - 0.04, 0.08, state(2), 0.3);
        track->probability = 2.0;
        return track;
    }

    std::shared_ptr<Veskar::Track> videoTrack() const { return report(Veskar::VideoObject, 7); }

    std::shared_ptr<Veskar::Track> radarTrack() const {
        auto track = report(Veskar::Radar, 3);
        track->speed = 1.0;
        // Straight ahead is an azimuth of 90 degrees. Also sets the track's geographic position.
        track->setLocation({track->state(4), 90.0, 0.0});
        return track;
    }
};

/// Passes one frame to the fusion. A failing frame does not affect later ones.
void feed(Veskar::FusionModule& fusion, const std::shared_ptr<Veskar::Track>& track) {
    try {
        fusion.cycle(track->source, track->time, {track});
    } catch (const std::exception& error) {
        std::cerr << "main_loop: " << error.what() << '\n';
    }
}

void print(Veskar::SystemTrack& object, const std::set<std::string>& tags) {
    std::cout << object.getClassName() << ' ' << object.id << " at " << object.state(4) << " m";
    if (const auto position = object.getGeoLocation()) {
        std::cout << " (" << position->latitude << ", " << position->longitude << ')';
    }
    std::cout << ", probability " << object.getTrackProbability();
    for (const std::string& tag : tags) {
        std::cout << ", " << tag;
    }
    std::cout << '\n';
}

/// The fusion thread: creates, uses and destroys all objects that are not thread-safe.
void fuse(const Veskar::Config& config) {
    Veskar::FusionModule fusion(config);
    Veskar::DetectionPriority priority(config);
    const double start = now();
    for (int frame = 0; frame < 30; ++frame) {
        const Person person{start + 0.1 * frame, 0.1 * frame};
        feed(fusion, person.videoTrack());
        feed(fusion, person.radarTrack());
    }
    for (const std::shared_ptr<Veskar::SystemTrack>& object : fusion.systemTracks) {
        print(*object, priority.evaluateTrack(*object));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: main_loop FUSION.json\n";
        return EXIT_FAILURE;
    }
    try {
        const Veskar::Config config = Veskar::Config::parse(argv[1]);

        // Created here, before the fusion thread uses them: their changes arrive in the main
        // context of the creating thread.
        Dbus::GeoLocation::getPosition(0.0, 0.0);
        Dbus::RadarStatus::init();
        if (!Dbus::RadarStatus::getIsEnabled()) {
            std::cout << "The radar is switched off.\n";
        }

        GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
        const auto quit = [](gpointer data) -> gboolean {
            g_main_loop_quit(static_cast<GMainLoop*>(data));
            return G_SOURCE_REMOVE;
        };
        std::thread fusionThread([&] {
            fuse(config);
            g_idle_add(quit, loop);
        });
        g_main_loop_run(loop);
        fusionThread.join();
        g_main_loop_unref(loop);
    } catch (const std::exception& error) {
        std::cerr << "main_loop: " << error.what() << " (the system log says more)\n";
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
