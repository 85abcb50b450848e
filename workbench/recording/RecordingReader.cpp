// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingReader.h"

#include "io/InputError.h"
#include "io/LineParser.h"
#include "io/TextFile.h"
#include "recording/Header.h"
#include "recording/LabelFields.h"
#include "recording/RefusedFrame.h"
#include "recording/RepeatedIds.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

ImageBox readBox(const LineFields& fields) {
    const LineFields box = fields.object("box");
    box.allowOnly({"left", "bottom", "right", "top"});
    const ImageBox result{box.number("left"), box.number("bottom"), box.number("right"),
                          box.number("top")};
    if (!(result.left <= result.right)) {
        box.refuse("right", "is left of left");
    }
    return result;
}

void readBase(const LineFields& fields, ReportBase& report) {
    report.id = fields.integer("id");
    report.coasting = fields.numberWithin("coasting", 0.0, infinite, 0.0);
    report.confirmed = fields.boolean("confirmed", true);
}

VideoReport readVideo(const LineFields& fields) {
    fields.allowOnly({"id", "box", "velocity", "age", "coasting", "confirmed", "class",
                      "classProbability", "color", "colorProbability", "upperClothingColor",
                      "upperClothingColorProbability", "lowerClothingColor",
                      "lowerClothingColorProbability"});
    VideoReport report;
    readBase(fields, report);
    report.box = readBox(fields);
    if (fields.has("velocity")) {
        report.velocity.emplace();
        fields.numbers("velocity", 2, report.velocity->data());
    }
    report.age = fields.numberWithin("age", 0.0, infinite, 0.0);
    report.labels = readLabels(fields);
    return report;
}

RadarReport readRadarReport(const LineFields& fields) {
    fields.allowOnly({"id", "range", "azimuth", "speed", "direction", "radialSpeed", "coasting",
                      "confirmed", "class", "classProbability"});
    RadarReport report;
    readBase(fields, report);
    report.range = fields.numberWithin("range", 0.0, infinite);
    report.azimuth = fields.numberWithin("azimuth", -360.0, 360.0);
    report.speed = fields.optionalNumber("speed");
    report.direction = fields.optionalNumber("direction");
    report.radialSpeed = fields.optionalNumber("radialSpeed");
    if (report.speed && *report.speed < 0.0) {
        fields.refuse("speed", "is negative");
    }
    if (report.speed.has_value() != report.direction.has_value()) {
        fields.refuse(report.speed ? "direction" : "speed",
                      "missing; speed and direction go together");
    }
    if (!report.speed && !report.radialSpeed) {
        fields.refuse("radialSpeed",
                      "missing; a radar track has a speed and direction or a radial "
                      "speed");
    }
    report.objectClass = readLabel(fields, "class", "classProbability");
    return report;
}

ReadyEstimate readEstimate(const LineFields& fields) {
    fields.allowOnly({"id", "state", "covariance", "box", "coasting", "confirmed", "class",
                      "classProbability", "color", "colorProbability", "upperClothingColor",
                      "upperClothingColorProbability", "lowerClothingColor",
                      "lowerClothingColorProbability"});
    ReadyEstimate report;
    readBase(fields, report);
    fields.numbers("state", 6, report.state.data());
    std::array<double, 21> upper{};
    fields.numbers("covariance", upper.size(), upper.data());
    std::size_t next = 0;
    for (Eigen::Index row = 0; row < 6; ++row) {
        for (Eigen::Index column = row; column < 6; ++column) {
            report.covariance(row, column) = report.covariance(column, row) = upper[next++];
        }
        if (!(report.covariance(row, row) > 0.0)) {
            fields.refuse("covariance", fmt::format("variance {} is not positive", row));
        }
    }
    if (fields.has("box")) {
        report.box = readBox(fields);
    }
    report.labels = readLabels(fields);
    return report;
}

void addReport(std::vector<Report>& tracks, const LineFields& fields, Veskar::Source source) {
    if (fields.has("state")) {
        tracks.emplace_back(readEstimate(fields));
    } else if (source == Veskar::Radar) {
        tracks.emplace_back(readRadarReport(fields));
    } else {
        tracks.emplace_back(readVideo(fields));
    }
}

SensorFrame readSensorFrame(const LineFields& fields, Veskar::Source source) {
    fields.allowOnly({"source", "time", "received", "tracks"});
    SensorFrame frame;
    frame.source = source;
    frame.time = fields.number("time");
    frame.received = fields.number("received", frame.time);
    frame.tracks.reserve(fields.array("tracks").size());
    fields.forEach("tracks",
                   [&](const LineFields& track) { addReport(frame.tracks, track, source); });
    refuseRepeatedIds<Report>(frame.tracks, "tracks",
                              [](const Report& report) { return baseOf(report).id; });
    return frame;
}

TruthObject readTruthObject(const LineFields& fields) {
    fields.allowOnly({"id", "class", "position", "velocity", "size", "centre", "video", "radar"});
    TruthObject object;
    object.id = fields.integer("id");
    object.className = fields.text("class", "unknown");
    fields.numbers("position", 2, object.position.data());
    fields.numbers("velocity", 2, object.velocity.data());
    if (fields.has("size")) {
        object.size.emplace();
        fields.numbers("size", 3, object.size->data());
    }
    if (fields.has("centre")) {
        object.centre.emplace();
        fields.numbers("centre", 2, object.centre->data());
    }
    object.inVideo = fields.boolean("video", true);
    object.inRadar = fields.boolean("radar", true);
    return object;
}

TruthFrame readTruthFrame(const LineFields& fields) {
    fields.allowOnly({"source", "time", "objects"});
    TruthFrame frame;
    frame.time = fields.number("time");
    frame.objects.reserve(fields.array("objects").size());
    fields.forEach("objects", [&](const LineFields& object) {
        frame.objects.push_back(readTruthObject(object));
    });
    refuseRepeatedIds<TruthObject>(frame.objects, "objects",
                                   [](const TruthObject& object) { return object.id; });
    return frame;
}

RecordingLine readLine(const LineFields& fields) {
    const std::string source = fields.text("source");
    if (source == "video") {
        return readSensorFrame(fields, Veskar::VideoObject);
    }
    if (source == "radar") {
        return readSensorFrame(fields, Veskar::Radar);
    }
    if (source == "truth") {
        return readTruthFrame(fields);
    }
    fields.refuse("source", fmt::format("\"{}\" is not video, radar or truth", source));
}

// Truth as this program writes it; in another order of keys it is read, which only takes longer.
bool startsAsTruth(std::string_view text) {
    constexpr std::string_view start = R"({"source":"truth")";
    return text.substr(0, start.size()) == start;
}

const ImageBox* boxOf(const Report& report) {
    if (const auto* video = std::get_if<VideoReport>(&report)) {
        return &video->box;
    }
    const auto* ready = std::get_if<ReadyEstimate>(&report);
    return ready != nullptr && ready->box ? &*ready->box : nullptr;
}

void checkBoxes(const SensorFrame& frame) {
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        const ImageBox* box = boxOf(frame.tracks[i]);
        if (box != nullptr && !(box->bottom <= box->top)) {
            throw InputError(fmt::format("tracks[{}].box.top: is below bottom", i));
        }
    }
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

}  // namespace

RecordingReader::RecordingReader(const std::string& path, TruthLines truthLines,
                                 const FirstLine& firstLine)
    : lines_(path), parser_(std::make_unique<LineParser>()), truthLines_(truthLines) {
    std::string_view text;
    const bool isEmpty = !lines_.next(text);
    if (firstLine) {
        firstLine(isEmpty ? std::string_view() : text);
    }
    if (isEmpty) {
        throw InputError(lines_.name() +
                         ":1: the file is empty, expected the header of a recording");
    }
    try {
        const nlohmann::json json = parseJsonLine(text);
        head_ = readHeader(Fields(json));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(
            fmt::format("{}: no header of a recording: {}", lines_.place(), reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(fmt::format("{}: {}", lines_.place(), error.what()));
    }
    digestLine(text);
}

RecordingReader::~RecordingReader() = default;

std::optional<RecordingLine> RecordingReader::next() {
    std::string_view text;
    while (lines_.next(text)) {
        const bool isSkipped = truthLines_ == TruthLines::Skip && startsAsTruth(text);
        if (!isBlank(text) && !isSkipped) {
            RecordingLine line = parse(text);
            if (std::holds_alternative<SensorFrame>(line)) {
                digestLine(text);
            }
            return line;
        }
    }
    return std::nullopt;
}

void RecordingReader::digestLine(std::string_view text) {
    // The line ends of other systems are no other content.
    const bool hasReturn = !text.empty() && text.back() == '\r';
    content_.add(text.substr(0, text.size() - (hasReturn ? 1 : 0)));
    content_.add("\n");
}

RecordingLine RecordingReader::parse(std::string_view text) {
    RecordingLine line = parser_->read(lines_, text, readLine);
    using Reason = RefusedFrame::Reason;
    Reason reason = Reason::Time;
    try {
        std::visit([&](const auto& frame) { checkOrder(frame); }, line);
        if (const auto* frame = std::get_if<SensorFrame>(&line)) {
            reason = Reason::Box;
            checkBoxes(*frame);
        }
    } catch (const InputError& error) {
        const std::string what = lines_.place() + ": " + error.what();
        if (auto* frame = std::get_if<SensorFrame>(&line)) {
            throw RefusedFrame(what, reason, std::move(*frame));
        }
        throw InputError(what);
    }
    return line;
}

void RecordingReader::checkOrder(const TruthFrame& frame) {
    if (lastTruth_ && !(frame.time > *lastTruth_)) {
        throw InputError(fmt::format("time: {} is not later than {}, the time of the truth before",
                                     frame.time, *lastTruth_));
    }
    lastTruth_ = frame.time;
}

void RecordingReader::checkOrder(const SensorFrame& frame) {
    const auto before = lastTime_.find(frame.source);
    if (before != lastTime_.end() && !(frame.time > before->second)) {
        throw InputError(
            fmt::format("time: {} is not later than {}, the time of the {} frame "
                        "before",
                        frame.time, before->second, sourceName(frame.source)));
    }
    if (frame.received < frame.time) {
        throw InputError(fmt::format("received: {} is before the time of the frame, {}",
                                     frame.received, frame.time));
    }
    if (lastReceived_ && frame.received < *lastReceived_) {
        throw InputError(
            fmt::format("received: {} is before {}, when the frame before was "
                        "received; frames stand in the order of their arrival",
                        frame.received, *lastReceived_));
    }
    lastTime_[frame.source] = frame.time;
    lastReceived_ = frame.received;
}

}  // namespace Workbench
