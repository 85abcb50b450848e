// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigKeys.h"

#include <algorithm>
#include <stdexcept>

namespace VeskarTest {
namespace {

using Veskar::Config;

const std::string video = "veskarInputs/video";
const std::string module = "veskarModule";
const std::string gain = "veskarModule/gainNegative";
const std::string priority = "veskarDetectionPriority";
const std::string rules = "veskarRules";

}  // namespace

// Fields have the names of their keys.
#define FIELD(record, key) #key, [](const Config& config) -> KeyValue { return config.record.key; }

const std::vector<ConfigKey>& configKeys() {
    static const std::vector<ConfigKey> keys = {
        {video, FIELD(inputs.video, uvCorrelation), {}},
        {video, FIELD(inputs.video, uvVelocityStd), {}},
        {video, FIELD(inputs.video, minimumPseudoRangeStd), {}},
        {video, FIELD(inputs.video, maximumPseudoRangeStd), {}},
        {video, FIELD(inputs.video, pseudoRangeDotStd), {}},
        {video, FIELD(inputs.video, minimumAngle), {}},
        {video, FIELD(inputs.video, uvPositionStd), {}},
        {gain, FIELD(module.gainNegative, radar), {}},
        {gain, FIELD(module.gainNegative, video), {}},
        {module, FIELD(module, splitGating), {}},
        {module, FIELD(module, gatingDistance), {}},
        {module, FIELD(module, positionGatingDistance), {}},
        {module, FIELD(module, velocityGatingSimilarity), {}},
        {module, FIELD(module, velocityMinGatingLimit), {}},
        {module, FIELD(module, stationaryBlockingMinSpeed), 2.7777777777777777},
        {module, FIELD(module, stationaryBlockingMaxUVSpeed), 0.03},
        {module, FIELD(module, stationaryBlockingMinVideoAge), 3.0},
        {module, FIELD(module, trackKillTime), {}},
        {module, FIELD(module, systemTrackConfirmationLimitUpper), {}},
        {module, FIELD(module, systemTrackConfirmationLimitLower), {}},
        {module, FIELD(module, allowRadarToMultiple), {}},
        {module, FIELD(module, useJVA), {}},
        {module, FIELD(module, removeClassMismatches), false},
        {module, FIELD(module, trackedOdMotionAnalyzerMaxHistoryLength), 20},
        {module, FIELD(module, trackedOdMotionAnalyzerMinHistoryLength), 3},
        {module, FIELD(module, trackedOdMotionAnalyzerDistanceThreshold), 0.2},
        {module, FIELD(module, autocalibrationAgeLimit), 1.0},
        {module, FIELD(module, autocalibrationVideoCoastingLimit), 0.1},
        {module, FIELD(module, autocalibrationEdgeLimit), 0.99},
        {module, FIELD(module, autocalibrationVideoNearLimit), 0.2},
        {priority, FIELD(detectionPriority, vuraWidthFractionLimit), {}},
        {priority, FIELD(detectionPriority, vuraHeightFractionLimit), {}},
        {priority, FIELD(detectionPriority, vodWidthFractionLimit), {}},
        {priority, FIELD(detectionPriority, vodHeightFractionLimit), {}},
        {priority, FIELD(detectionPriority, longlivedLimit), {}},
        {priority, FIELD(detectionPriority, travelledDistanceLimit), {}},
        {priority, FIELD(detectionPriority, radarFarLimitHuman), {}},
        {priority, FIELD(detectionPriority, radarFarLimitVehicle), {}},
        {priority, FIELD(detectionPriority, nVideoFramesMissedLimitLow), {}},
        {priority, FIELD(detectionPriority, nVideoFramesMissedLimitHigh), {}},
        {priority, FIELD(detectionPriority, autoAnnotationEnabled), {}},
        {rules, FIELD(rules, radarKeepsSystemTrack), false},
        {rules, FIELD(rules, pairGate), 0.0},
        {rules, FIELD(rules, pairMemory), false},
        {rules, FIELD(rules, pairMemoryTime), 1.0},
        {rules, FIELD(rules, pairMemoryFreshness), 0.15},
        {rules, FIELD(rules, pairMemoryFar), 4.0},
        {rules, FIELD(rules, pairMemoryNear), 2.0},
        {rules, FIELD(rules, pairMemoryLimit), 1.5},
        {rules, FIELD(rules, pairMemoryCrowd), 0.5},
        {rules, FIELD(rules, takeOver), false},
        {rules, FIELD(rules, freshReportsOnly), false},
        {rules, FIELD(rules, coastingLimit), 0.05},
        {rules, FIELD(rules, orderedMerging), false},
        {rules, FIELD(rules, videoRangeStd), 0.0},
        {rules, FIELD(rules, radarSilence), 1.0},
    };
    return keys;
}

#undef FIELD

const std::vector<ConfigSection>& configSections() {
    static const std::vector<ConfigSection> sections = {
        {"", 1, {"veskarInputs", "veskarModule", "veskarDetectionPriority"}},
        {"veskarInputs", 2, {"video"}},
        {video,
         3,
         {"uvCorrelation", "uvVelocityStd", "minimumPseudoRangeStd", "maximumPseudoRangeStd",
          "pseudoRangeDotStd", "minimumAngle", "uvPositionStd"}},
        {module,
         2,
         {"gainNegative", "splitGating", "gatingDistance", "positionGatingDistance",
          "velocityGatingSimilarity", "velocityMinGatingLimit", "trackKillTime",
          "systemTrackConfirmationLimitUpper", "systemTrackConfirmationLimitLower",
          "allowRadarToMultiple", "useJVA"}},
        {gain, 3, {"radar", "video"}},
        {priority,
         2,
         {"vuraWidthFractionLimit", "vuraHeightFractionLimit", "vodWidthFractionLimit",
          "vodHeightFractionLimit", "longlivedLimit", "travelledDistanceLimit",
          "radarFarLimitHuman", "radarFarLimitVehicle", "nVideoFramesMissedLimitLow",
          "nVideoFramesMissedLimitHigh", "autoAnnotationEnabled"}},
    };
    return sections;
}

const ConfigSection& configSection(const std::string& path) {
    const auto found = std::find_if(configSections().begin(), configSections().end(),
                                    [&](const ConfigSection& s) { return s.path == path; });
    if (found == configSections().end()) {
        throw std::invalid_argument("no section " + path);
    }
    return *found;
}

}  // namespace VeskarTest
