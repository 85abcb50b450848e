// SPDX-License-Identifier: Apache-2.0
// Texts of run.json.
#pragma once

#include <veskar-host/InputError.h>

#include "live/service/RunConfiguration.h"

#include <string>

namespace VeskarTest {

inline const std::string installationText = R"({
    "camera": {"bdc": false, "rotation": {"pitch": 20, "yaw": 0, "roll": 0},
        "resolution": [1920, 1080], "sensorOffset": [0, 0],
        "imageToRadiansPolynomial": [0, 0.785, 0, 0], "radiansToImagePolynomial": [0, 1.274, 0, 0],
        "fov": [0.785, 0.44], "position": [0, 0, 5]},
    "radar": {"position": [0, 0, 4.6], "rotation": {"pitch": 0, "yaw": 0, "roll": 0},
        "rangeStd": 0.3, "azimuthStd": 1, "velocityStd": 0.5}})";

inline const std::string camera =
    R"({"kind":"camera","format":"onvif-json","input":{"type":"mqtt","topic":"a/#"}})";
inline const std::string broker = R"({"host":"127.0.0.1"})";

/// @param members further members of the document, each behind a comma
inline std::string document(const std::string& members) {
    return R"({"installation":)" + installationText + members + "}";
}
inline std::string withSensor(const std::string& sensor) {
    return document(R"(,"sensors":[)" + sensor + "]");
}
inline std::string withOutput(const std::string& output) {
    return document(R"(,"brokers":[)" + broker + R"(],"sensors":[)" + camera + R"(],"outputs":[)" +
                    output + "]");
}

inline std::string refusalOf(const std::string& text) {
    try {
        Veskar::Live::RunConfiguration::parse(text);
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
    return "";
}

}  // namespace VeskarTest
