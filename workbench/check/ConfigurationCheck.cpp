// SPDX-License-Identifier: Apache-2.0
#include "check/ConfigurationCheck.h"

#include "HostLibrary.h"
#include "check/Rules.h"
#include "host/adapter/ParameterTable.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// Meaning and limits of a key's number; the library checks its type.
struct Limit {
    std::string_view key;
    std::string_view meaning;   ///< meaning of the value, with its unit
    Range allowed = anyNumber;  ///< values outside are a fault
    Range usual = anyNumber;    ///< values outside are a warning
};

using Limits = std::vector<Limit>;

constexpr Range gains{0.0, 1.0, false, true};
constexpr Range probabilities{0.0, 1.0, true, false};
constexpr Range fractions{0.0, 1.0, true, true};
/// A limit of 1 would make the gate divide by zero.
constexpr Range cosines{-1.0, 1.0, true, false};
constexpr Range counts{1.0, 2147483647.0, true, true};
constexpr Range depressionAngles{0.0, 90.0, false, false};

const Limits videoLimits{
    {"uvCorrelation", "correlation of u and v", {-1.0, 1.0, false, false}},
    {"uvVelocityStd", "standard deviation of the image velocity, 1/s", aboveZero, {0.005, 0.5}},
    {"minimumPseudoRangeStd",
     "least standard deviation of the pseudo range, m",
     aboveZero,
     {0.5, 10.0}},
    {"maximumPseudoRangeStd",
     "largest standard deviation of the pseudo range, m",
     aboveZero,
     {2.0, 100.0}},
    {"pseudoRangeDotStd",
     "standard deviation of the pseudo-range rate, m/s",
     aboveZero,
     {0.5, 20.0}},
    {"minimumAngle", "least angle below the horizon, degrees", depressionAngles, {0.2, 10.0}},
    {"uvPositionStd", "standard deviation of the image position", aboveZero, {0.002, 0.1}},
};

const Limits gainLimits{
    {"radar", "gain of a frame in which radar misses a track", gains, {0.1, 1.0}},
    {"video", "gain of a frame in which video misses a track", gains, {0.1, 1.0}},
};

const Limits moduleLimits{
    {"gatingDistance", "combined gate, standard deviations", aboveZero, {3.0, 12.0}},
    {"positionGatingDistance", "position gate, standard deviations", aboveZero, {1.5, 6.0}},
    {"velocityGatingSimilarity", "least cosine between the velocities", cosines, {-1.0, 0.7}},
    {"velocityMinGatingLimit",
     "sum of image speeds from which they count, 1/s",
     fromZero,
     {0.02, 2.0}},
    {"stationaryBlockingMinSpeed", "radar speed, m/s", fromZero, {0.5, 20.0}},
    {"stationaryBlockingMaxUVSpeed", "image speed, 1/s", fromZero, {0.0, 0.2}},
    {"stationaryBlockingMinVideoAge", "age of the video track, s", fromZero, {0.0, 30.0}},
    {"trackKillTime", "coasting time, s", aboveZero},
    {"systemTrackConfirmationLimitUpper",
     "probability that confirms one sensor alone",
     probabilities,
     {0.7, 0.9999}},
    {"systemTrackConfirmationLimitLower",
     "probability that confirms radar and video together",
     probabilities,
     {0.3, 0.95}},
    {"trackedOdMotionAnalyzerMaxHistoryLength", "positions", counts, {2.0, 1000.0}},
    {"trackedOdMotionAnalyzerMinHistoryLength", "positions", counts, {2.0, 1000.0}},
    {"trackedOdMotionAnalyzerDistanceThreshold",
     "distance on the image plane",
     fromZero,
     {0.01, 1.0}},
    {"autocalibrationAgeLimit", "age, s", fromZero, {0.0, 60.0}},
    {"autocalibrationVideoCoastingLimit", "coasting time, s", fromZero, {0.0, 0.5}},
    {"autocalibrationEdgeLimit", "distance from the image centre", fromZero, {0.5, 1.0}},
    {"autocalibrationVideoNearLimit", "distance on the image plane", fromZero, {0.0, 1.0}},
    {"autocalibrationHumanMinAspect", "width over height", fromZero, {0.1, 1.0}},
    {"autocalibrationHumanMaxAspect", "width over height", fromZero, {0.2, 2.0}},
};

const Limits priorityLimits{
    {"vuraWidthFractionLimit", "box width, fraction of the image", fractions},
    {"vuraHeightFractionLimit", "box height, fraction of the image", fractions},
    {"vodWidthFractionLimit", "box width, fraction of the image", fractions},
    {"vodHeightFractionLimit", "box height, fraction of the image", fractions},
    {"longlivedLimit", "age, s", fromZero, {0.5, 60.0}},
    {"travelledDistanceLimit", "distance on the image plane", fromZero, {0.0, 2.0}},
    {"radarFarLimitHuman", "range, m", fromZero, {5.0, 500.0}},
    {"radarFarLimitVehicle", "range, m", fromZero, {5.0, 500.0}},
    {"nVideoFramesMissedLimitLow", "evaluations without video", counts},
    {"nVideoFramesMissedLimitHigh", "evaluations without video", counts},
};

const Limits ruleLimits{
    {"pairGate", "fraction of positionGatingDistance; 0 is no limit", fromZero, {0.0, 1.5}},
    {"pairMemoryTime", "time constant, s", aboveZero, {0.2, 10.0}},
    {"pairMemoryFreshness", "coasting time, s", fromZero, {0.01, 1.0}},
    {"pairMemoryFar", "standard deviations", aboveZero, {2.0, 10.0}},
    {"pairMemoryNear", "standard deviations", aboveZero, {0.5, 5.0}},
    {"pairMemoryLimit", "squared standard deviations", aboveZero, {0.5, 9.0}},
    {"pairMemoryCrowd", "number of tracks", fromZero, {0.1, 4.0}},
    {"coastingLimit", "coasting time, s", aboveZero, {0.01, 0.5}},
    {"videoRangeStd", "standard deviation of a range, m; 0 is no limit", fromZero, {0.0, 50.0}},
    {"radarSilence", "time without a radar frame, s", aboveZero, {0.2, 10.0}},
};

/// @return the rules for the members of "veskarHost"
const Rules& hostRules() {
    static const Rules rules = [] {
        Rules list;
        for (const Parameter& parameter : parameterTable()) {
            Key key{parameter.name, Wanted::Number, isOptional};
            key.allowed = {parameter.least, parameter.most, parameter.isLeastAllowed, true};
            if (parameter.count > 1) {
                key.wanted = Wanted::Array;
                key.count = parameter.count;
            }
            list.push_back({key, parameter.meaning});
        }
        return list;
    }();
    return rules;
}

/// @return the finding for a fault that the library has found
Finding findingOf(const Veskar::ConfigFault& fault) {
    const bool isIgnored = fault.effect == Veskar::ConfigFault::Effect::Ignored;
    return {isIgnored ? Severity::Warning : Severity::Fault,
            static_cast<std::uint64_t>(fault.line),
            fault.key,
            fault.value,
            fault.reason,
            true};
}

/// Checks the values of a document whose keys and types the library has checked.
class ValueCheck {
public:
    ValueCheck(const std::vector<Veskar::ConfigFault>& faults, Findings& findings)
        : faults_(faults), findings_(findings) {}

    void run(const LocatedValue& document) {
        const LocatedValue* inputs = objectAt(document, "veskarInputs");
        if (const LocatedValue* video = inputs ? objectAt(*inputs, "video") : nullptr) {
            limits(*video, "veskarInputs.video", videoLimits);
            order(*video, "veskarInputs.video", "minimumPseudoRangeStd", "maximumPseudoRangeStd");
        }
        if (const LocatedValue* module = objectAt(document, "veskarModule")) {
            checkModule(*module);
        }
        if (const LocatedValue* priority = objectAt(document, "veskarDetectionPriority")) {
            limits(*priority, "veskarDetectionPriority", priorityLimits);
            order(*priority, "veskarDetectionPriority", "nVideoFramesMissedLimitLow",
                  "nVideoFramesMissedLimitHigh");
        }
        if (const LocatedValue* rules = objectAt(document, "veskarRules")) {
            limits(*rules, "veskarRules", ruleLimits);
            order(*rules, "veskarRules", "pairMemoryNear", "pairMemoryFar");
            checkTakeOver(*rules);
        }
        if (const LocatedValue* host = document.find("veskarHost")) {
            checkMembers(*host, "veskarHost", hostRules(), Severity::Fault, findings_);
        }
    }

private:
    void checkModule(const LocatedValue& module) {
        const std::string path = "veskarModule";
        limits(module, path, moduleLimits);
        if (const LocatedValue* list = objectAt(module, "gainNegative")) {
            limits(*list, path + ".gainNegative", gainLimits);
        }
        order(module, path, "systemTrackConfirmationLimitLower",
              "systemTrackConfirmationLimitUpper");
        order(module, path, "trackedOdMotionAnalyzerMinHistoryLength",
              "trackedOdMotionAnalyzerMaxHistoryLength");
        order(module, path, "autocalibrationHumanMinAspect", "autocalibrationHumanMaxAspect");
        const LocatedValue* killTime = numberAt(module, "trackKillTime");
        if (killTime != nullptr && killTime->number != 0.5) {
            findings_.push_back(
                {Severity::Warning, static_cast<std::uint64_t>(killTime->line),
                 path + ".trackKillTime", killTime->text,
                 "sensor tracks leave after 0.5 s of coasting, whatever this says"});
        }
    }

    void checkTakeOver(const LocatedValue& rules) {
        const LocatedValue* takeOver = rules.find("takeOver");
        const LocatedValue* fresh = rules.find("freshReportsOnly");
        const auto isOn = [](const LocatedValue* value) {
            return value != nullptr && value->text == "true";
        };
        if (isOn(takeOver) && !isOn(fresh)) {
            findings_.push_back({Severity::Warning, static_cast<std::uint64_t>(takeOver->line),
                                 "veskarRules.takeOver", takeOver->text,
                                 "without freshReportsOnly a lost track takes its object back"});
        }
    }

    /// Skips values that are not used as they are written.
    void limits(const LocatedValue& object, const std::string& path, const Limits& table) {
        for (const Limit& limit : table) {
            const std::string place = joinPath(path, limit.key);
            const LocatedValue* value = numberAt(object, limit.key);
            if (value != nullptr && !isFaulty(place)) {
                const Wanted wanted =
                    value->kind == LocatedValue::Kind::Real ? Wanted::Real : Wanted::Integer;
                checkNumber(
                    *value, place,
                    {{limit.key, wanted, isRequired, limit.allowed}, limit.meaning, limit.usual},
                    findings_);
            }
        }
    }

    bool isFaulty(const std::string& place) const {
        return std::any_of(
            faults_.begin(), faults_.end(),
            [&place](const Veskar::ConfigFault& fault) { return fault.key == place; });
    }

    /// Reports when the lower number is above the upper one.
    void order(const LocatedValue& object, const std::string& path, std::string_view lower,
               std::string_view upper) {
        const LocatedValue* small = numberAt(object, lower);
        const LocatedValue* large = numberAt(object, upper);
        if (small != nullptr && large != nullptr && small->number > large->number) {
            findings_.push_back({Severity::Fault, static_cast<std::uint64_t>(small->line),
                                 joinPath(path, lower), small->text,
                                 fmt::format("expected at most {}, the value of {} (line {})",
                                             large->text, upper, large->line)});
        }
    }

    const std::vector<Veskar::ConfigFault>& faults_;
    Findings& findings_;
};

}  // namespace

void checkConfiguration(const std::vector<Veskar::ConfigFault>& faults,
                        const LocatedValue& document, Findings& findings) {
    std::transform(faults.begin(), faults.end(), std::back_inserter(findings), findingOf);
    ValueCheck(faults, findings).run(document);
}

}  // namespace Workbench
