// SPDX-License-Identifier: Apache-2.0
#include "check/ConventionErrors.h"

#include <veskar-host/Projection.h>

#include "SourceDirectory.h"
#include "io/OutputFile.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <variant>

namespace VeskarTest {
namespace {

using namespace Workbench;

constexpr double unixTime = 1.7e9;

template <typename Change>
void forBoxes(SensorFrame& frame, Change change) {
    for (Report& report : frame.tracks) {
        if (auto* seen = std::get_if<VideoReport>(&report)) {
            change(seen->box);
        }
    }
}

template <typename Change>
void forRadar(SensorFrame& frame, Change change) {
    for (Report& report : frame.tracks) {
        if (auto* heard = std::get_if<RadarReport>(&report)) {
            change(*heard);
        }
    }
}

/// Scales and moves a box, keeping the names of its sides.
ImageBox scaled(const ImageBox& box, double u, double v, double u0, double v0) {
    return {u * box.left + u0, v * box.bottom + v0, u * box.right + u0, v * box.top + v0};
}

ImageBox sorted(const ImageBox& box) {
    return {box.left, std::min(box.bottom, box.top), box.right, std::max(box.bottom, box.top)};
}

}  // namespace

const std::vector<ConventionError>& conventionErrors() {
    static const std::vector<ConventionError> errors{
        {"nothing", "", nullptr, nullptr},
        {"v downward", "v-downward", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) { box = sorted(scaled(box, 1.0, -1.0, 0.0, 0.0)); });
         }},
        {"v downward, bottom above top", "v-downward", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) { box = scaled(box, 1.0, -1.0, 0.0, 0.0); });
         }},
        {"boxes 0..1", "box-unit-range", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) { box = scaled(box, 0.5, 0.5, 0.5, 0.5); });
         }},
        {"boxes 0..1, v downward", "box-unit-range", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) { box = scaled(box, 0.5, -0.5, 0.5, 0.5); });
         }},
        {"boxes in pixels", "box-pixels", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) {
                 box = sorted(scaled(box, 960.0, -540.0, 960.0, 540.0));
             });
         }},
        {"boxes in pixels, bottom above top", "box-pixels", nullptr,
         [](SensorFrame& frame) {
             forBoxes(frame, [](ImageBox& box) { box = scaled(box, 960.0, -540.0, 960.0, 540.0); });
         }},
        {"azimuth mirrored", "azimuth-sign", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame, [](RadarReport& heard) { heard.azimuth *= -1.0; });
         }},
        {"azimuth and direction mirrored", "azimuth-sign", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame, [](RadarReport& heard) {
                 heard.azimuth *= -1.0;
                 heard.direction = -*heard.direction;
             });
         }},
        {"azimuth in radians", "azimuth-radians", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame, [](RadarReport& heard) { heard.azimuth = radians(heard.azimuth); });
         }},
        {"camera angles in radians", "camera-angles-radians",
         [](RecordingHeader& header) {
             Mounting& camera = header.camera.mounting;
             camera.yaw = radians(camera.yaw);
             camera.pitch = radians(camera.pitch);
             camera.roll = radians(camera.roll);
         },
         nullptr},
        {"camera height times 2", "camera-height",
         [](RecordingHeader& header) { header.camera.mounting.position[2] *= 2.0; }, nullptr},
        {"camera height times 0.5", "camera-height",
         [](RecordingHeader& header) { header.camera.mounting.position[2] *= 0.5; }, nullptr},
        {"camera height in feet", "camera-height",
         [](RecordingHeader& header) { header.camera.mounting.position[2] /= 0.3048; }, nullptr},
        {"camera height in centimetres", "camera-height",
         [](RecordingHeader& header) { header.camera.mounting.position[2] *= 100.0; }, nullptr},
        {"speed in km/h", "speed-unit", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame, [](RadarReport& heard) { heard.speed = 3.6 * *heard.speed; });
         }},
        {"direction turned by 180 degrees", "direction-turned", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame,
                      [](RadarReport& heard) { heard.direction = *heard.direction + 180.0; });
         }},
        {"direction in radians", "direction-radians", nullptr,
         [](SensorFrame& frame) {
             forRadar(frame,
                      [](RadarReport& heard) { heard.direction = radians(*heard.direction); });
         }},
        {"radar on UNIX time", "time-bases", nullptr,
         [](SensorFrame& frame) {
             if (frame.source == Veskar::Radar) {
                 frame.time += unixTime;
                 frame.received += unixTime;
             }
         }},
        {"radar stamps on UNIX time, received on uptime", "time-bases", nullptr,
         [](SensorFrame& frame) {
             if (frame.source == Veskar::Radar) {
                 frame.time += unixTime;
             }
         }},
        {"class words of its own", "class-words", nullptr,
         [](SensorFrame& frame) {
             static const std::map<std::string, std::string> words{
                 {"human", "person"},
                 {"car", "sedan"},
                 {"truck", "lorry"},
                 {"motorcycle_bicycle", "cyclist"}};
             for (Report& report : frame.tracks) {
                 if (auto* seen = std::get_if<VideoReport>(&report)) {
                     std::string& name = seen->labels.objectClass.name;
                     const auto word = words.find(name);
                     name = word == words.end() ? name : word->second;
                 }
             }
         }},
    };
    return errors;
}

const ConventionError& conventionError(const std::string& what) {
    for (const ConventionError& error : conventionErrors()) {
        if (error.what == what) {
            return error;
        }
    }
    throw std::invalid_argument(what);
}

Recorded simulated(const std::string& scenario, std::uint64_t seed, double duration) {
    Scenario scene =
        readScenario(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/" + scenario + ".json");
    if (duration > 0.0) {
        scene.duration = duration;
    }
    Simulation simulation(scene, seed);
    Recorded recorded{simulation.header(), {}};
    simulation.run(
        [&](const RecordingLine& line) {
            if (const auto* frame = std::get_if<SensorFrame>(&line)) {
                recorded.frames.push_back(*frame);
            }
        },
        [](double) {});
    return recorded;
}

void write(const Recorded& recorded, const ConventionError& error, const std::string& path) {
    OutputFile output(path);
    RecordingHeader header = recorded.header;
    if (error.ofHeader != nullptr) {
        error.ofHeader(header);
    }
    output.write(toJsonLine(header));
    for (SensorFrame frame : recorded.frames) {
        if (error.ofFrame != nullptr) {
            error.ofFrame(frame);
        }
        output.write(toJsonLine(frame));
    }
    output.commit();
}

std::vector<std::string> namesOf(const RecordingCheckResult& result) {
    std::vector<std::string> names;
    for (const Convention& convention : result.conventions) {
        names.push_back(convention.name);
    }
    return names;
}

}  // namespace VeskarTest
