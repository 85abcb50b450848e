// SPDX-License-Identifier: Apache-2.0
// The contents of files in words and as JSON.
#include "info/FileInfo.h"
#include "io/Counted.h"
#include "io/UtcText.h"

#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using nlohmann::ordered_json;

std::string row(const char* name, const std::string& text) {
    return fmt::format("  {:<10} {}\n", name, text);
}

/// "12 human, 3 car", in the order of their names.
std::string countsOf(const std::map<std::string, std::uint64_t>& numbers) {
    std::string text;
    for (const auto& [name, count] : numbers) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", count, name);
    }
    return text;
}

std::map<std::string, std::uint64_t> classesOf(const std::map<std::int32_t, std::string>& objects) {
    std::map<std::string, std::uint64_t> classes;
    for (const auto& [id, name] : objects) {
        ++classes[name];
    }
    return classes;
}

/// Frames per second; 0 with fewer than two frames.
double rateOf(const FrameStatistics& frames) {
    return frames.frames() < 2 ? 0.0 : 1.0 / frames.medianInterval();
}

double tracksEach(std::uint64_t tracks, std::uint64_t frames) {
    return frames == 0 ? 0.0 : static_cast<double>(tracks) / static_cast<double>(frames);
}

std::string textOf(const TimeSpan& span) {
    return span.last < span.first ? "no time"
                                  : fmt::format("{:.2f} s, from {:.2f} to {:.2f}", span.length(),
                                                span.first, span.last);
}

std::string textOf(const RecordingInfo::Sensor& sensor) {
    const FrameStatistics& frames = sensor.frames;
    std::string text = counted(frames.frames(), "frame");
    if (frames.frames() > 1) {
        text += fmt::format(
            ", {:.1f} per second, {:.1f} tracks each; {:.0f} ms from measurement "
            "to arrival",
            rateOf(frames), tracksEach(frames.tracks(), frames.frames()),
            1000.0 * frames.meanDelay());
    }
    return text + "; " + counted(sensor.ids.size(), "track id");
}

/// "2026-05-01 12:00:00 UTC"
std::string utc(double seconds) {
    const std::string text = utcText(std::floor(seconds));
    return text.empty() ? "before 1970 or after 9999"
                        : fmt::format("{} {} UTC", text.substr(0, 10), text.substr(11, 8));
}

const char* wordOf(TruthKind kind) {
    switch (kind) {
        case TruthKind::Complete:
            return "complete";
        case TruthKind::Incomplete:
            return "incomplete";
        default:
            return "none";
    }
}

ordered_json jsonOf(const TimeSpan& span) {
    return span.last < span.first
               ? ordered_json(nullptr)
               : ordered_json{{"firstSeconds", span.first}, {"lastSeconds", span.last}};
}

ordered_json jsonOf(const RecordingInfo::Sensor& sensor) {
    const FrameStatistics& frames = sensor.frames;
    return {{"frames", frames.frames()},
            {"framesPerSecond", rateOf(frames)},
            {"emptyFrames", frames.emptyFrames()},
            {"reports", frames.tracks()},
            {"meanDelaySeconds", frames.meanDelay()},
            {"trackIds", sensor.ids.size()},
            {"reportsByClass", sensor.classes}};
}

}  // namespace

std::string toText(const RecordingInfo& info) {
    const RecordingHeader& header = info.header;
    std::string text = fmt::format("recording \"{}\"\n", header.name);
    text += header.origin.empty() ? "" : row("origin", header.origin);
    text += header.licence.empty() ? "" : row("licence", header.licence);
    text += header.seed ? row("seed", std::to_string(*header.seed)) : "";
    text += header.epoch ? row("begins", utc(*header.epoch + info.span.first)) : "";
    text += row("duration", textOf(info.span));
    text += row("video", textOf(info.video));
    text += info.video.classes.empty() ? "" : row("", countsOf(info.video.classes));
    text += row("radar", textOf(info.radar));
    text += info.radar.classes.empty() ? "" : row("", countsOf(info.radar.classes));
    text += row("truth", header.truth == TruthKind::None
                             ? "none"
                             : fmt::format("{}: {}, {}", wordOf(header.truth),
                                           counted(info.truthFrames, "moment"),
                                           counted(info.trueObjects.size(), "object")));
    text += info.trueObjects.empty() ? "" : row("", countsOf(classesOf(info.trueObjects)));
    return text + row("digest", info.digest);
}

std::string toText(const FusedInfo& info) {
    std::string text = fmt::format("fused tracks of the recording \"{}\"\n", info.recording);
    text += row("duration", textOf(info.span));
    text += row("frames", fmt::format("{}, {:.1f} tracks each", info.frames,
                                      tracksEach(info.tracks, info.frames)));
    text += row("tracks", fmt::format("{}, {} confirmed", counted(info.ids.size(), "system track"),
                                      info.confirmedIds.size()));
    if (!info.digests) {
        return text + row("digests", "none: the file is unfinished");
    }
    text += row("recording", info.digests->recording);
    text += row("camera", info.digests->camera);
    text += row("fusion", info.digests->configuration);
    return text + (info.digests->host.empty() ? "" : row("host", info.digests->host));
}

ordered_json toJson(const RecordingInfo& info) {
    const RecordingHeader& header = info.header;
    ordered_json json{{"kind", "recording"},
                      {"name", header.name},
                      {"origin", header.origin},
                      {"licence", header.licence},
                      {"span", jsonOf(info.span)},
                      {"video", jsonOf(info.video)},
                      {"radar", jsonOf(info.radar)},
                      {"truth",
                       {{"kind", wordOf(header.truth)},
                        {"moments", info.truthFrames},
                        {"objects", info.trueObjects.size()},
                        {"objectsByClass", classesOf(info.trueObjects)}}},
                      {"digest", info.digest}};
    if (header.seed) {
        json["seed"] = *header.seed;
    }
    if (header.epoch) {
        json["epochSeconds"] = *header.epoch;
    }
    return json;
}

ordered_json toJson(const FusedInfo& info) {
    ordered_json json{{"kind", "fused"},
                      {"recording", info.recording},
                      {"span", jsonOf(info.span)},
                      {"frames", info.frames},
                      {"tracks", info.tracks},
                      {"systemTracks", info.ids.size()},
                      {"confirmedSystemTracks", info.confirmedIds.size()}};
    if (info.digests) {
        json["digests"] = {{"recording", info.digests->recording},
                           {"camera", info.digests->camera},
                           {"configuration", info.digests->configuration},
                           {"host", info.digests->host}};
    }
    return json;
}

}  // namespace Workbench
