// SPDX-License-Identifier: Apache-2.0
#include "calibrate/CalibrationPage.h"

#include <veskar-host/Projection.h>
#include <veskar/Version.h>

#include "calibrate/CalibrationText.h"

#include <cmath>
#include <cstddef>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// More points hide each other.
constexpr std::size_t mostPairs = 4000;

/// Keeps the file small; NaN becomes null.
double rounded(double value) {
    constexpr double parts = 1e4;
    return std::round(value * parts) / parts;
}

Json pairsJson(const std::vector<PairError>& pairs) {
    Json json;
    for (const char* const name : {"time", "range", "u", "v", "bearingBefore", "bearingAfter",
                                   "depressionBefore", "depressionAfter"}) {
        json[name] = Json::array();
    }
    const std::size_t step = pairs.size() / mostPairs + 1;
    for (std::size_t i = 0; i < pairs.size(); i += step) {
        const PairError& pair = pairs[i];
        json["time"].push_back(rounded(pair.sinceMiddle));
        json["range"].push_back(rounded(pair.range));
        json["u"].push_back(rounded(pair.seen[0]));
        json["v"].push_back(rounded(pair.seen[1]));
        json["bearingBefore"].push_back(rounded(degrees(pair.before[0])));
        json["bearingAfter"].push_back(rounded(degrees(pair.after[0])));
        json["depressionBefore"].push_back(rounded(degrees(pair.before[1])));
        json["depressionAfter"].push_back(rounded(degrees(pair.after[1])));
    }
    return json;
}

}  // namespace

Json calibrationPageData(const RecordingHeader& header, const CalibrationResult& result) {
    const auto [width, height] = header.camera.resolution;
    return {{"version", 1},
            {"program", Veskar::veskarVersion()},
            {"name", header.name},
            {"aspect", static_cast<double>(width) / height},
            {"answer", toJson(header, result)},
            {"pairs", pairsJson(result.pairs)}};
}

}  // namespace Workbench
