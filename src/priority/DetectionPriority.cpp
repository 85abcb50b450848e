// SPDX-License-Identifier: Apache-2.0
#include <veskar/DetectionPriority.h>
#include <veskar/VODAnnotationClient.h>
#include <veskar/Vocabulary.h>

#include "track/Support.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace Veskar {
namespace {

using Latches = std::array<bool, 6>;

// What a latch remembers; the latch's bit value is 1 << its index. The fourth is reserved.
enum Reason : std::size_t {
    BothSensors = 0,
    OutsideVideoRange = 1,
    OutsideRadarRange = 2,
    LongLived = 4,
    TravelledFar = 5
};

std::string reasonCode(const Latches& latches) {
    int code = 0;
    for (std::size_t i = 0; i < latches.size(); ++i) {
        code += latches[i] ? 1 << i : 0;
    }
    return std::to_string(code);
}

}  // namespace

DetectionPriority::DetectionPriority(const Config& config)
    : blockingEnabled_(true), config_(config) {}

std::set<std::string> DetectionPriority::evaluateTrack(SystemTrack& track) {
    std::set<std::string> tags;
    if (isFused(track)) {
        tags.insert(Vocabulary::minimizeFalseAlarms);
        sendAnnotation(track, firstTrack(track, Source::VideoObject)->className);
    }
    if (!isUnsupported(track)) {
        tags.insert(Vocabulary::maximizeDetections);
    }
    const auto latched = [&] {
        return std::any_of(track.reasonLatches.begin(), track.reasonLatches.end(),
                           [](bool latch) { return latch; });
    };
    if (!latched() && track.isConfirmed) {
        findReasons(track);
    }
    if (latched()) {
        tags.insert(Vocabulary::automatic);
    }
    tags.insert(reasonCode(track.reasonLatches));
    return tags;
}

void DetectionPriority::findReasons(SystemTrack& track) {
    const Config::PriorityConfig& limits = config_.detectionPriority;
    if (isFused(track)) {
        track.reasonLatches[BothSensors] = true;
        return;
    }
    const bool longLived = track.time - track.systemStartTime > limits.longlivedLimit;
    const bool travelledFar =
        track.getTravelledDistanceInImagePlane() > limits.travelledDistanceLimit;
    if (track.hasTracks(Source::Radar)) {
        if (sceneConditions_.hasGoodVideoConditions(track)) {
            ++track.framesWithoutVideo;
        }
        const bool blockedHigh =
            blockedByNoVideoDetection(track, limits.nVideoFramesMissedLimitHigh);
        const bool blockedLow = blockedByNoVideoDetection(track, limits.nVideoFramesMissedLimitLow);
        track.reasonLatches[OutsideVideoRange] =
            outsideVideoDetectionRange(track) && !outsideRadarDetectionRange(track) && !blockedHigh;
        track.reasonLatches[LongLived] = longLived && !blockedHigh;
        track.reasonLatches[TravelledFar] = travelledFar && !blockedLow;
        // Also when blocked, and not for being outside video range alone: the annotation shall
        // teach video what it should have seen.
        if (longLived || travelledFar) {
            sendAnnotation(track, Vocabulary::unknown);
        }
    } else if (track.hasTracks(Source::VideoObject)) {
        track.reasonLatches[OutsideRadarRange] = outsideRadarDetectionRange(track);
        track.reasonLatches[LongLived] = longLived;
        track.reasonLatches[TravelledFar] = travelledFar;
    }
}

bool DetectionPriority::outsideVideoDetectionRange(const SystemTrack& track) const {
    const Config::PriorityConfig& limits = config_.detectionPriority;
    return std::max(limits.vuraHeightFractionLimit, limits.vodHeightFractionLimit) >
           0.5 * track.boundingBox(3);
}

bool DetectionPriority::outsideRadarDetectionRange(const SystemTrack& track) const {
    if (track.hasTracks(Source::Radar)) {
        return false;
    }
    const Track* video = firstTrack(track, Source::VideoObject);
    return video != nullptr && farLimit(video->className) < video->state(4);
}

double DetectionPriority::farLimit(const std::string& className) const {
    static const std::set<std::string> vehicles = {Vocabulary::car,
                                                   Vocabulary::truck,
                                                   Vocabulary::bus,
                                                   Vocabulary::vehicleOther,
                                                   Vocabulary::motorcycleBicycle,
                                                   Vocabulary::bike};
    if (vehicles.count(className) > 0) {
        return config_.detectionPriority.radarFarLimitVehicle;
    }
    if (className == Vocabulary::human) {
        return config_.detectionPriority.radarFarLimitHuman;
    }
    return std::numeric_limits<double>::max();
}

bool DetectionPriority::blockedByNoVideoDetection(const SystemTrack& track, int limit) const {
    return blockingEnabled_ && track.framesWithoutVideo > limit;
}

void DetectionPriority::sendAnnotation(SystemTrack& track, const std::string& label) {
    const Track* radar = firstTrack(track, Source::Radar);
    if (!config_.detectionPriority.autoAnnotationEnabled || radar == nullptr) {
        return;
    }
    std::vector<int>& annotated = track.annotatedRadarIds;
    if (std::find(annotated.begin(), annotated.end(), radar->id) != annotated.end()) {
        return;
    }
    track.annotationLabel = label;
    annotated.push_back(radar->id);
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const std::int64_t milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    const VODAnnotation::VODAnnotationClient client =
        VODAnnotation::VODAnnotationClient::getInstance();
    client.send({radar->id, label, track.boundingBox, milliseconds});
}

// Both stand here so that a host may treat this class and SceneConditions alike.
void DetectionPriority::setupCamera(const std::shared_ptr<Camera>& /*camera*/) {}

void DetectionPriority::updateSNRBlock() {}

}  // namespace Veskar
