// SPDX-License-Identifier: Apache-2.0
#include "calibrate/CalibrationText.h"

#include <veskar-host/Projection.h>

#include <cmath>
#include <optional>
#include <set>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using OrderedJson = nlohmann::ordered_json;

/// Correlations beyond this are named in the text.
constexpr double strongCorrelation = 0.7;

/// @return the value of the installation that a parameter corrects; nothing for those of the data
std::optional<double> statedValue(const Installation& stated, MountingParameter parameter) {
    const Mounting& camera = stated.camera.mounting;
    const Mounting& radar = stated.radar.mounting;
    switch (parameter) {
        case MountingParameter::CameraYaw:
            return camera.yaw;
        case MountingParameter::CameraPitch:
            return camera.pitch;
        case MountingParameter::CameraRoll:
            return camera.roll;
        case MountingParameter::CameraHeight:
            return camera.position[2];
        case MountingParameter::RadarYaw:
            return radar.yaw;
        case MountingParameter::RadarForward:
            return radar.position[0];
        case MountingParameter::RadarLeft:
            return radar.position[1];
        default:
            return std::nullopt;
    }
}

const char* verdictWord(Verdict verdict) {
    switch (verdict) {
        case Verdict::NotAsked:
            return "not asked";
        case Verdict::CannotTell:
            return "cannot tell";
        case Verdict::AsStated:
            return "as stated";
        case Verdict::Corrected:
            break;
    }
    return "corrected";
}

double presented(MountingParameter parameter, double value) {
    return traitsOf(parameter).scale * value + 0.0;  // no negative zero
}

std::string conclusionOf(const Installation& stated, const CalibrationResult& result,
                         MountingParameter parameter) {
    if (result.of(parameter).verdict != Verdict::Corrected) {
        return verdictWord(result.of(parameter).verdict);
    }
    const double correction = presented(parameter, result.correction[indexOf(parameter)]);
    if (const auto before = statedValue(stated, parameter)) {
        return fmt::format("corrected from {:.6g} to {:.6g}", *before, *before + correction);
    }
    return fmt::format("corrected by {:+.4g}", correction);
}

std::string valueText(const Installation& stated, const CalibrationResult& result,
                      MountingParameter parameter) {
    const CalibrationValue& value = result.of(parameter);
    const ParameterTraits& traits = traitsOf(parameter);
    if (value.verdict == Verdict::CannotTell) {
        return fmt::format("{:<14}cannot tell (std {:.4f} {})\n", traits.name,
                           presented(parameter, value.std), traits.unit);
    }
    return fmt::format("{:<14}error {:+.4f} {} (std {:.4f}, 95 % within {:.4f}): {}\n", traits.name,
                       presented(parameter, value.value), traits.unit,
                       presented(parameter, value.std), presented(parameter, value.interval),
                       conclusionOf(stated, result, parameter));
}

std::string correlationsOf(const CalibrationResult& result) {
    std::string text;
    for (const MountingParameter one : allParameters()) {
        for (const MountingParameter other : allParameters()) {
            const double value = result.correlation(indexOf(one), indexOf(other));
            if (one < other && std::abs(value) > strongCorrelation) {
                text += fmt::format("{} and {} are correlated by {:+.2f}\n", traitsOf(one).name,
                                    traitsOf(other).name, value);
            }
        }
    }
    return text;
}

std::string remediesOf(const CalibrationResult& result) {
    std::string text;
    std::set<std::string> named;
    for (const MountingParameter parameter : allParameters()) {
        const bool isUnknown = result.of(parameter).verdict == Verdict::CannotTell;
        if (isUnknown && named.insert(traitsOf(parameter).remedy).second) {
            text +=
                fmt::format("for {}: {}\n", traitsOf(parameter).name, traitsOf(parameter).remedy);
        }
    }
    return text;
}

std::string errorsText(const TypicalErrors& before, const TypicalErrors& after) {
    const auto change = [](const char* name, double from, double to) {
        return fmt::format("{} {:.2f} deg before, {:.2f} after", name, degrees(from), degrees(to));
    };
    return (std::isnan(before.bearing) ? ""
                                       : change("bearing", before.bearing, after.bearing) + "; ") +
           change("depression", before.depression, after.depression) + "\n";
}

OrderedJson errorsJson(const TypicalErrors& errors) {
    return {{"bearingDegrees", degrees(errors.bearing)},
            {"depressionDegrees", degrees(errors.depression)},
            {"standardDeviations", errors.whitened}};
}

}  // namespace

std::string toText(const Installation& stated, const CalibrationResult& result) {
    std::string text = fmt::format("{} samples of objects that both sensors saw, in {} clusters\n",
                                   result.samples, result.clusters);
    if (result.clusters < leastClusters) {
        text += fmt::format("cannot tell anything: {} clusters are needed\n", leastClusters);
    }
    for (const MountingParameter parameter : allParameters()) {
        if (result.of(parameter).verdict != Verdict::NotAsked) {
            text += valueText(stated, result, parameter);
        }
    }
    text += correlationsOf(result) + remediesOf(result);
    if (result.samples > 0) {
        text += "typical errors: " + errorsText(result.before, result.after);
    }
    if (result.heldOutBefore.whitened > 0.0) {
        text += "in held-out time: " + errorsText(result.heldOutBefore, result.heldOutAfter);
    }
    if (!result.refusal.empty()) {
        text += "nothing is corrected: " + result.refusal + "\n";
    }
    return text;
}

nlohmann::ordered_json toJson(const Installation& stated, const CalibrationResult& result) {
    OrderedJson json{{"samples", result.samples},
                     {"clusters", result.clusters},
                     {"values", OrderedJson::object()},
                     {"correlations", OrderedJson::object()}};
    for (const MountingParameter parameter : allParameters()) {
        const CalibrationValue& value = result.of(parameter);
        if (value.verdict == Verdict::NotAsked) {
            continue;
        }
        const ParameterTraits& traits = traitsOf(parameter);
        OrderedJson& entry = json["values"][traits.name];
        entry = {{"unit", traits.unit},
                 {"std", presented(parameter, value.std)},
                 {"verdict", verdictWord(value.verdict)},
                 {"correction", presented(parameter, result.correction[indexOf(parameter)])}};
        if (const auto before = statedValue(stated, parameter)) {
            entry["stated"] = *before;
        }
        if (value.verdict == Verdict::CannotTell) {
            entry["remedy"] = traits.remedy;
        } else {
            entry["error"] = presented(parameter, value.value);
            entry["interval95"] = presented(parameter, value.interval);
        }
        for (const MountingParameter other : allParameters()) {
            if (parameter < other && result.of(other).verdict != Verdict::NotAsked) {
                json["correlations"][traits.name][traitsOf(other).name] =
                    result.correlation(indexOf(parameter), indexOf(other));
            }
        }
    }
    json["errors"] = {{"before", errorsJson(result.before)}, {"after", errorsJson(result.after)}};
    json["heldOut"] = {{"before", errorsJson(result.heldOutBefore)},
                       {"after", errorsJson(result.heldOutAfter)}};
    json["refusal"] = result.refusal;
    return json;
}

std::string toJsonText(const Installation& stated, const CalibrationResult& result) {
    return toJson(stated, result).dump(2) + "\n";
}

}  // namespace Workbench
