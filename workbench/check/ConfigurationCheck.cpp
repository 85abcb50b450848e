// SPDX-License-Identifier: Apache-2.0
#include "check/ConfigurationCheck.h"

#include "check/Rules.h"

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr Range gain{0.0, 1.0, false, true};
constexpr Range probability{0.0, 1.0, true, false};
constexpr Range fraction{0.0, 1.0, true, true};
/// At 1 the gate's distance divides by zero.
constexpr Range cosine{-1.0, 1.0, true, false};
constexpr Range count{1.0, 2147483647.0, true, true};
constexpr Range angle{0.0, 90.0, false, false};

const Rules rootRules{
    {"veskarInputs", Wanted::Object, "what the sensors deliver"},
    {"veskarModule", Wanted::Object, "gating, association and track management"},
    {"veskarDetectionPriority", Wanted::Object, "limits of the detection priority"},
};

const Rules inputRules{{"video", Wanted::Object, "noise of the video tracks"}};

const Rules videoRules{
    {"uvCorrelation", Wanted::Real, "correlation of u and v", true, {-1.0, 1.0, false, false}},
    {"uvVelocityStd",
     Wanted::Real,
     "standard deviation of the image velocity, 1/s",
     true,
     positive,
     {0.005, 0.5}},
    {"minimumPseudoRangeStd",
     Wanted::Real,
     "least standard deviation of the pseudo range, m",
     true,
     positive,
     {0.5, 10.0}},
    {"maximumPseudoRangeStd",
     Wanted::Real,
     "largest standard deviation of the pseudo range, m",
     true,
     positive,
     {2.0, 100.0}},
    {"pseudoRangeDotStd",
     Wanted::Real,
     "standard deviation of the pseudo-range rate, m/s",
     true,
     positive,
     {0.5, 20.0}},
    {"minimumAngle",
     Wanted::Real,
     "least angle below the horizon, degrees",
     true,
     angle,
     {0.2, 10.0}},
    {"uvPositionStd",
     Wanted::Real,
     "standard deviation of the image position",
     true,
     positive,
     {0.002, 0.1}},
};

const Rules gainRules{
    {"radar",
     Wanted::Real,
     "gain of a frame in which radar misses a track",
     true,
     gain,
     {0.1, 1.0}},
    {"video",
     Wanted::Real,
     "gain of a frame in which video misses a track",
     true,
     gain,
     {0.1, 1.0}},
};

const Rules moduleRules{
    {"gainNegative", Wanted::Object, "gains of misses"},
    {"splitGating", Wanted::Boolean, "gate position and velocity apart"},
    {"gatingDistance",
     Wanted::Real,
     "combined gate, standard deviations",
     true,
     positive,
     {3.0, 12.0}},
    {"positionGatingDistance",
     Wanted::Real,
     "position gate, standard deviations",
     true,
     positive,
     {1.5, 6.0}},
    {"velocityGatingSimilarity",
     Wanted::Real,
     "least cosine between the velocities",
     true,
     cosine,
     {-1.0, 0.7}},
    {"velocityMinGatingLimit",
     Wanted::Real,
     "sum of image speeds from which they count, 1/s",
     true,
     notNegative,
     {0.02, 2.0}},
    {"stationaryBlockingMinSpeed",
     Wanted::Real,
     "radar speed, m/s",
     false,
     notNegative,
     {0.5, 20.0},
     "10 km/h"},
    {"stationaryBlockingMaxUVSpeed",
     Wanted::Real,
     "image speed, 1/s",
     false,
     notNegative,
     {0.0, 0.2},
     "0.03"},
    {"stationaryBlockingMinVideoAge",
     Wanted::Real,
     "age of the video track, s",
     false,
     notNegative,
     {0.0, 30.0},
     "3.0"},
    {"trackKillTime", Wanted::Real, "coasting time, s", true, positive},
    {"systemTrackConfirmationLimitUpper",
     Wanted::Real,
     "probability that confirms one sensor alone",
     true,
     probability,
     {0.7, 0.9999}},
    {"systemTrackConfirmationLimitLower",
     Wanted::Real,
     "probability that confirms radar and video together",
     true,
     probability,
     {0.3, 0.95}},
    {"allowRadarToMultiple", Wanted::Boolean, "share a radar track between objects"},
    {"useJVA", Wanted::Boolean, "optimal instead of greedy assignment"},
    {"removeClassMismatches", Wanted::Boolean, "classes may part radar and video", false, anyNumber,
     anyNumber, "false"},
    {"trackedOdMotionAnalyzerMaxHistoryLength",
     Wanted::Integer,
     "positions",
     false,
     count,
     {2.0, 1000.0},
     "20"},
    {"trackedOdMotionAnalyzerMinHistoryLength",
     Wanted::Integer,
     "positions",
     false,
     count,
     {2.0, 1000.0},
     "3"},
    {"trackedOdMotionAnalyzerDistanceThreshold",
     Wanted::Real,
     "distance on the image plane",
     false,
     notNegative,
     {0.01, 1.0},
     "0.2"},
    {"autocalibrationAgeLimit", Wanted::Real, "age, s", false, notNegative, {0.0, 60.0}, "1.0"},
    {"autocalibrationVideoCoastingLimit",
     Wanted::Real,
     "coasting time, s",
     false,
     notNegative,
     {0.0, 0.5},
     "0.1"},
    {"autocalibrationEdgeLimit",
     Wanted::Real,
     "distance from the image centre",
     false,
     notNegative,
     {0.5, 1.0},
     "0.99"},
    {"autocalibrationVideoNearLimit",
     Wanted::Real,
     "distance on the image plane",
     false,
     notNegative,
     {0.0, 1.0},
     "0.2"},
    {"autocalibrationHumanMinAspect",
     Wanted::Real,
     "width over height",
     false,
     notNegative,
     {0.1, 1.0},
     "0.3"},
    {"autocalibrationHumanMaxAspect",
     Wanted::Real,
     "width over height",
     false,
     notNegative,
     {0.2, 2.0},
     "0.65"},
};

const Rules priorityRules{
    {"vuraWidthFractionLimit", Wanted::Real, "box width, fraction of the image", true, fraction},
    {"vuraHeightFractionLimit", Wanted::Real, "box height, fraction of the image", true, fraction},
    {"vodWidthFractionLimit", Wanted::Real, "box width, fraction of the image", true, fraction},
    {"vodHeightFractionLimit", Wanted::Real, "box height, fraction of the image", true, fraction},
    {"longlivedLimit", Wanted::Real, "age, s", true, notNegative, {0.5, 60.0}},
    {"travelledDistanceLimit",
     Wanted::Real,
     "distance on the image plane",
     true,
     notNegative,
     {0.0, 2.0}},
    {"radarFarLimitHuman", Wanted::Real, "range, m", true, notNegative, {5.0, 500.0}},
    {"radarFarLimitVehicle", Wanted::Real, "range, m", true, notNegative, {5.0, 500.0}},
    {"nVideoFramesMissedLimitLow", Wanted::Integer, "evaluations without video", true, count},
    {"nVideoFramesMissedLimitHigh", Wanted::Integer, "evaluations without video", true, count},
    {"autoAnnotationEnabled", Wanted::Boolean, "send annotations"},
};

/// Complains when one number must not be above another.
void checkOrder(const LocatedValue& object, const std::string& path, std::string_view lower,
                std::string_view upper, Findings& findings) {
    const LocatedValue* small = numberAt(object, lower);
    const LocatedValue* large = numberAt(object, upper);
    if (small != nullptr && large != nullptr && small->number > large->number) {
        findings.push_back({Severity::Fault, static_cast<std::uint64_t>(small->line),
                            joinPath(path, lower), small->text,
                            fmt::format("expected at most {}, the value of {} (line {})",
                                        large->text, upper, large->line)});
    }
}

void warn(const LocatedValue& value, const std::string& key, std::string message,
          Findings& findings) {
    findings.push_back({Severity::Warning, static_cast<std::uint64_t>(value.line), key, value.text,
                        std::move(message)});
}

void checkModule(const LocatedValue& module, Findings& findings) {
    const std::string path = "veskarModule";
    checkMembers(module, path, moduleRules, Severity::Warning, findings);
    if (const LocatedValue* gains = objectAt(module, "gainNegative")) {
        checkMembers(*gains, path + ".gainNegative", gainRules, Severity::Warning, findings);
    }
    checkOrder(module, path, "systemTrackConfirmationLimitLower",
               "systemTrackConfirmationLimitUpper", findings);
    checkOrder(module, path, "trackedOdMotionAnalyzerMinHistoryLength",
               "trackedOdMotionAnalyzerMaxHistoryLength", findings);
    checkOrder(module, path, "autocalibrationHumanMinAspect", "autocalibrationHumanMaxAspect",
               findings);
    const LocatedValue* killTime = numberAt(module, "trackKillTime");
    if (killTime != nullptr && killTime->number != 0.5) {
        warn(*killTime, path + ".trackKillTime",
             "sensor tracks leave after 0.5 s of coasting, whatever this says", findings);
    }
    const bool hasMinimum = module.find("autocalibrationHumanMinAspect") != nullptr;
    const bool hasMaximum = module.find("autocalibrationHumanMaxAspect") != nullptr;
    if (hasMinimum != hasMaximum) {
        const char* present =
            hasMinimum ? "autocalibrationHumanMinAspect" : "autocalibrationHumanMaxAspect";
        warn(*module.find(present), joinPath(path, present),
             "has no effect without its counterpart; 0.3 and 0.65 are used", findings);
    }
}

}  // namespace

void checkConfiguration(const LocatedValue& document, Findings& findings) {
    checkMembers(document, "", rootRules, Severity::Warning, findings);
    if (const LocatedValue* inputs = objectAt(document, "veskarInputs")) {
        checkMembers(*inputs, "veskarInputs", inputRules, Severity::Warning, findings);
        if (const LocatedValue* video = objectAt(*inputs, "video")) {
            checkMembers(*video, "veskarInputs.video", videoRules, Severity::Warning, findings);
            checkOrder(*video, "veskarInputs.video", "minimumPseudoRangeStd",
                       "maximumPseudoRangeStd", findings);
        }
    }
    if (const LocatedValue* module = objectAt(document, "veskarModule")) {
        checkModule(*module, findings);
    }
    if (const LocatedValue* priority = objectAt(document, "veskarDetectionPriority")) {
        checkMembers(*priority, "veskarDetectionPriority", priorityRules, Severity::Warning,
                     findings);
        checkOrder(*priority, "veskarDetectionPriority", "nVideoFramesMissedLimitLow",
                   "nVideoFramesMissedLimitHigh", findings);
    }
}

}  // namespace Workbench
