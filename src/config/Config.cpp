// SPDX-License-Identifier: Apache-2.0
#include <veskar/Config.h>
#include <veskar/JsonNode.h>
#include <veskar/Vocabulary.h>

#include "config/SectionReader.h"

#include <stdexcept>
#include <tuple>
#include <utility>

namespace Veskar {
namespace {

using VideoInput = Config::VideoInput;
using FusionInputs = Config::FusionInputs;
using GainNegative = Config::GainNegative;
using ModuleConfig = Config::ModuleConfig;
using PriorityConfig = Config::PriorityConfig;

/// The limits of a human's box. One without the other says little, so both count or neither.
struct HumanAspectLimits {
    void read(const JsonNode& section, ModuleConfig& record) const {
        std::pair<double, double>& limits = record.autocalibrationAspectLimits[Vocabulary::human];
        try {
            limits.first = section.get("autocalibrationHumanMinAspect").asReal();
            limits.second = section.get("autocalibrationHumanMaxAspect").asReal();
        } catch (const std::runtime_error&) {
            limits = {0.3, 0.65};
        }
    }
};

// The order of each table is the order of reading: it decides which failure is reported.

constexpr std::tuple videoKeys{
    required("uvCorrelation", &VideoInput::uvCorrelation),
    required("uvVelocityStd", &VideoInput::uvVelocityStd),
    required("minimumPseudoRangeStd", &VideoInput::minimumPseudoRangeStd),
    required("maximumPseudoRangeStd", &VideoInput::maximumPseudoRangeStd),
    required("pseudoRangeDotStd", &VideoInput::pseudoRangeDotStd),
    required("minimumAngle", &VideoInput::minimumAngle),
    required("uvPositionStd", &VideoInput::uvPositionStd),
};

constexpr std::tuple inputsKeys{required("video", &FusionInputs::video)};

constexpr std::tuple gainNegativeKeys{
    required("radar", &GainNegative::radar),
    required("video", &GainNegative::video),
};

constexpr std::tuple moduleKeys{
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
    HumanAspectLimits{},
};

constexpr std::tuple priorityKeys{
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

constexpr std::tuple rootKeys{
    required("veskarInputs", &Config::inputs),
    required("veskarModule", &Config::module),
    required("veskarDetectionPriority", &Config::detectionPriority),
};

}  // namespace

VideoInput Config::VideoInput::parse(const JsonNode& node) {
    return parseSection<VideoInput>(node, videoKeys);
}

FusionInputs Config::FusionInputs::parse(const JsonNode& node) {
    return parseSection<FusionInputs>(node, inputsKeys);
}

GainNegative Config::GainNegative::parse(const JsonNode& node) {
    return parseSection<GainNegative>(node, gainNegativeKeys);
}

ModuleConfig Config::ModuleConfig::parse(const JsonNode& node) {
    return parseSection<ModuleConfig>(node, moduleKeys);
}

PriorityConfig Config::PriorityConfig::parse(const JsonNode& node) {
    return parseSection<PriorityConfig>(node, priorityKeys);
}

Config Config::parse(const JsonNode& node) {
    return parseSection<Config>(node, rootKeys);
}

Config Config::parse(const std::string& path) {
    return parse(JsonNode::fromFile(path));
}

Config Config::parse_json_string(const std::string& json) {
    return parse(JsonNode::fromString(json));
}

}  // namespace Veskar
