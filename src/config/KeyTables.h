// SPDX-License-Identifier: Apache-2.0
// The keys of a configuration: what each one fills, and what stands in for it. Reading, writing and
// the search for faults all go by these tables.
#pragma once

#include <veskar/Config.h>

#include <tuple>
#include <utility>

namespace Veskar {

/// A key without which its section is refused. A record as Value is a section of its own.
template <typename Record, typename Value>
struct RequiredKey {
    const char* name;
    Value Record::*field;
};

/// A key with a default, which also stands in for a value of the wrong type.
template <typename Record, typename Value>
struct OptionalKey {
    const char* name;
    Value Record::*field;
    Value fallback;
};

/// A section of optional keys, which may be missing as a whole.
template <typename Record, typename Value>
struct OptionalSection {
    const char* name;
    Value Record::*field;
};

/// The limits of a human's box. One without the other says little, so both count or neither.
struct HumanAspectKeys {
    const char* least = "autocalibrationHumanMinAspect";
    const char* most = "autocalibrationHumanMaxAspect";
    std::pair<double, double> fallback{0.3, 0.65};
};

template <typename Record, typename Value>
constexpr RequiredKey<Record, Value> required(const char* name, Value Record::*field) {
    return {name, field};
}

template <typename Record, typename Value>
constexpr OptionalKey<Record, Value> optional(const char* name, Value Record::*field,
                                              Value fallback) {
    return {name, field, fallback};
}

template <typename Record, typename Value>
constexpr OptionalSection<Record, Value> optionalSection(const char* name, Value Record::*field) {
    return {name, field};
}

/// The keys of a section in the order of reading, which decides what failure is reported.
template <typename Record>
constexpr auto keysOf = std::tuple{};

template <>
inline constexpr auto keysOf<Config::VideoInput> = std::tuple{
    required("uvCorrelation", &Config::VideoInput::uvCorrelation),
    required("uvVelocityStd", &Config::VideoInput::uvVelocityStd),
    required("minimumPseudoRangeStd", &Config::VideoInput::minimumPseudoRangeStd),
    required("maximumPseudoRangeStd", &Config::VideoInput::maximumPseudoRangeStd),
    required("pseudoRangeDotStd", &Config::VideoInput::pseudoRangeDotStd),
    required("minimumAngle", &Config::VideoInput::minimumAngle),
    required("uvPositionStd", &Config::VideoInput::uvPositionStd),
};

template <>
inline constexpr auto keysOf<Config::FusionInputs> =
    std::tuple{required("video", &Config::FusionInputs::video)};

template <>
inline constexpr auto keysOf<Config::GainNegative> = std::tuple{
    required("radar", &Config::GainNegative::radar),
    required("video", &Config::GainNegative::video),
};

using ModuleConfig = Config::ModuleConfig;

template <>
inline constexpr auto keysOf<ModuleConfig> = std::tuple{
    required("gainNegative", &ModuleConfig::gainNegative),
    required("splitGating", &ModuleConfig::splitGating),
    required("gatingDistance", &ModuleConfig::gatingDistance),
    required("positionGatingDistance", &ModuleConfig::positionGatingDistance),
    required("velocityGatingSimilarity", &ModuleConfig::velocityGatingSimilarity),
    required("velocityMinGatingLimit", &ModuleConfig::velocityMinGatingLimit),
    required("trackKillTime", &ModuleConfig::trackKillTime),
    required("systemTrackConfirmationLimitUpper", &ModuleConfig::systemTrackConfirmationLimitUpper),
    required("systemTrackConfirmationLimitLower", &ModuleConfig::systemTrackConfirmationLimitLower),
    required("allowRadarToMultiple", &ModuleConfig::allowRadarToMultiple),
    required("useJVA", &ModuleConfig::useJVA),
    optional("stationaryBlockingMinSpeed", &ModuleConfig::stationaryBlockingMinSpeed, 10.0 / 3.6),
    optional("stationaryBlockingMaxUVSpeed", &ModuleConfig::stationaryBlockingMaxUVSpeed, 0.03),
    optional("stationaryBlockingMinVideoAge", &ModuleConfig::stationaryBlockingMinVideoAge, 3.0),
    optional("removeClassMismatches", &ModuleConfig::removeClassMismatches, false),
    optional("trackedOdMotionAnalyzerMaxHistoryLength",
             &ModuleConfig::trackedOdMotionAnalyzerMaxHistoryLength, 20),
    optional("trackedOdMotionAnalyzerMinHistoryLength",
             &ModuleConfig::trackedOdMotionAnalyzerMinHistoryLength, 3),
    optional("trackedOdMotionAnalyzerDistanceThreshold",
             &ModuleConfig::trackedOdMotionAnalyzerDistanceThreshold, 0.2),
    optional("autocalibrationVideoNearLimit", &ModuleConfig::autocalibrationVideoNearLimit, 0.2),
    optional("autocalibrationVideoCoastingLimit", &ModuleConfig::autocalibrationVideoCoastingLimit,
             0.1),
    optional("autocalibrationEdgeLimit", &ModuleConfig::autocalibrationEdgeLimit, 0.99),
    optional("autocalibrationAgeLimit", &ModuleConfig::autocalibrationAgeLimit, 1.0),
    HumanAspectKeys{},
};

using PriorityConfig = Config::PriorityConfig;

template <>
inline constexpr auto keysOf<PriorityConfig> = std::tuple{
    required("vuraWidthFractionLimit", &PriorityConfig::vuraWidthFractionLimit),
    required("vuraHeightFractionLimit", &PriorityConfig::vuraHeightFractionLimit),
    required("vodWidthFractionLimit", &PriorityConfig::vodWidthFractionLimit),
    required("vodHeightFractionLimit", &PriorityConfig::vodHeightFractionLimit),
    required("longlivedLimit", &PriorityConfig::longlivedLimit),
    required("travelledDistanceLimit", &PriorityConfig::travelledDistanceLimit),
    required("radarFarLimitHuman", &PriorityConfig::radarFarLimitHuman),
    required("radarFarLimitVehicle", &PriorityConfig::radarFarLimitVehicle),
    required("nVideoFramesMissedLimitLow", &PriorityConfig::nVideoFramesMissedLimitLow),
    required("nVideoFramesMissedLimitHigh", &PriorityConfig::nVideoFramesMissedLimitHigh),
    required("autoAnnotationEnabled", &PriorityConfig::autoAnnotationEnabled),
};

using Rules = Config::Rules;

/// @return a key of the rules, whose default is that of the record
template <typename Value>
constexpr OptionalKey<Rules, Value> rule(const char* name, Value Rules::*field) {
    return {name, field, Rules{}.*field};
}

template <>
inline constexpr auto keysOf<Rules> = std::tuple{
    rule("radarKeepsSystemTrack", &Rules::radarKeepsSystemTrack),
    rule("pairGate", &Rules::pairGate),
    rule("pairMemory", &Rules::pairMemory),
    rule("pairMemoryTime", &Rules::pairMemoryTime),
    rule("pairMemoryFreshness", &Rules::pairMemoryFreshness),
    rule("pairMemoryFar", &Rules::pairMemoryFar),
    rule("pairMemoryNear", &Rules::pairMemoryNear),
    rule("pairMemoryLimit", &Rules::pairMemoryLimit),
    rule("pairMemoryCrowd", &Rules::pairMemoryCrowd),
    rule("takeOver", &Rules::takeOver),
    rule("freshReportsOnly", &Rules::freshReportsOnly),
    rule("coastingLimit", &Rules::coastingLimit),
    rule("orderedMerging", &Rules::orderedMerging),
    rule("videoRangeStd", &Rules::videoRangeStd),
    rule("radarSilence", &Rules::radarSilence),
};

template <>
inline constexpr auto keysOf<Config> = std::tuple{
    required("veskarInputs", &Config::inputs),
    required("veskarModule", &Config::module),
    required("veskarDetectionPriority", &Config::detectionPriority),
    optionalSection("veskarRules", &Config::rules),
};

}  // namespace Veskar
