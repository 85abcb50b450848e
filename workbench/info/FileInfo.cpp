// SPDX-License-Identifier: Apache-2.0
#include "info/FileInfo.h"

#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"

#include <algorithm>
#include <variant>

namespace Workbench {
namespace {

const std::string& classNameOf(const Report& report) {
    if (const auto* radar = std::get_if<RadarReport>(&report)) {
        return radar->objectClass.name;
    }
    if (const auto* video = std::get_if<VideoReport>(&report)) {
        return video->labels.objectClass.name;
    }
    return std::get<ReadyEstimate>(report).labels.objectClass.name;
}

void add(const SensorFrame& frame, std::uint64_t line, RecordingInfo& info) {
    info.span.add(frame.time);
    auto& sensor = frame.source == Veskar::VideoObject ? info.video : info.radar;
    sensor.frames.add(frame, line);
    for (const Report& report : frame.tracks) {
        sensor.ids.insert(baseOf(report).id);
        ++sensor.classes[classNameOf(report)];
    }
}

void add(const TruthFrame& frame, RecordingInfo& info) {
    info.span.add(frame.time);
    ++info.truthFrames;
    for (const TruthObject& object : frame.objects) {
        info.trueObjects.emplace(object.id, object.className);
    }
}

}  // namespace

void TimeSpan::add(double time) {
    first = std::min(first, time);
    last = std::max(last, time);
}

RecordingInfo infoOfRecording(const std::string& path, const Excerpt& excerpt,
                              const InfoProgress& progress) {
    RecordingReader reader(path);
    reader.keepOnly(excerpt);
    RecordingInfo info;
    info.header = reader.header();
    while (const auto line = reader.next()) {
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            add(*frame, reader.input().lineNumber(), info);
        } else {
            add(std::get<TruthFrame>(*line), info);
        }
        progress(reader.input());
    }
    info.digest = reader.digest();
    return info;
}

FusedInfo infoOfFused(const std::string& path, const InfoProgress& progress) {
    FusedReader reader(path);
    FusedInfo info;
    info.recording = reader.header().name;
    while (const auto frame = reader.next()) {
        info.span.add(frame->time);
        ++info.frames;
        info.tracks += frame->tracks.size();
        for (const FusedTrack& track : frame->tracks) {
            info.ids.insert(track.id);
            if (track.confirmed) {
                info.confirmedIds.insert(track.id);
            }
        }
        progress(reader.input());
    }
    info.digests = reader.digests();
    return info;
}

}  // namespace Workbench
