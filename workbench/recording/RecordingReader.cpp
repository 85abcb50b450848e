// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingReader.h"

#include <veskar-host/InputError.h>

#include "host/installation/HeaderFields.h"
#include "host/recording/FrameFields.h"
#include "host/recording/RepeatedIds.h"
#include "io/DocumentValue.h"
#include "io/LineParser.h"
#include "io/TextFile.h"
#include "recording/ExcerptFilter.h"
#include "recording/RefusedFrame.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

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

RecordingLine readFrameOfSource(const LineFields& fields) {
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

// Fast detection of truth lines as this program writes them; those with another order of keys are
// parsed, which only takes longer.
bool startsAsTruth(std::string_view text) {
    constexpr std::string_view start = R"({"source":"truth")";
    return text.substr(0, start.size()) == start;
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
        throw InputError(lines_.name() + ":1",
                         InputError("the file is empty, expected the header of a recording"));
    }
    try {
        const nlohmann::json json = parseJsonLine(text);
        head_ = readHeader(Fields(json));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(lines_.place(),
                         InputError("no header of a recording: " + reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(lines_.place(), error);
    }
    digestLine(text);
}

RecordingReader::~RecordingReader() = default;

void RecordingReader::keepOnly(const Excerpt& excerpt) {
    if (!excerpt.isAll()) {
        filter_ = std::make_unique<ExcerptFilter>(excerpt, truthLines_ == TruthLines::Read);
    }
}

std::optional<RecordingLine> RecordingReader::next() {
    std::string_view text;
    while (!isOver_ && !(filter_ && filter_->isOver()) && lines_.next(text)) {
        const bool isSkipped = truthLines_ == TruthLines::Skip && startsAsTruth(text);
        if (isBlank(text) || isSkipped) {
            continue;
        }
        std::optional<RecordingLine> line = parse(text);
        if (filter_ && !(line && filter_->takes(*line))) {
            continue;
        }
        if (!line || std::holds_alternative<SensorFrame>(*line)) {
            digestLine(text);
        }
        if (line) {
            return line;
        }
    }
    if (filter_ && !std::exchange(isOver_, true)) {
        endExcerpt();
    }
    return std::nullopt;
}

void RecordingReader::endExcerpt() {
    if (!filter_->hasFrame()) {
        throw InputError(lines_.name(), InputError("no sensor frame in the excerpt"));
    }
    end_ = filter_->endOf(end_);
    if (end_) {
        digestLine(fmt::format("{{\"end\":{}}}", *end_));
    }
}

/// @return a frame; nothing for the end
std::optional<RecordingLine> RecordingReader::readLine(const LineFields& fields) {
    if (end_) {
        throw InputError("a line behind the end of the recording");
    }
    if (fields.has("source") || !fields.has("end")) {
        return readFrameOfSource(fields);
    }
    readEnd(fields);
    return std::nullopt;
}

void RecordingReader::readEnd(const LineFields& fields) {
    fields.allowOnly({"end"});
    const double end = fields.number("end");
    if (!order_.mayEnd(end)) {
        fields.refuse("end", fmt::format("{} is before the last frame was received", end));
    }
    end_ = end;
}

void RecordingReader::digestLine(std::string_view text) {
    // A carriage return at the end of a line does not change the digest.
    const bool hasReturn = !text.empty() && text.back() == '\r';
    content_.add(text.substr(0, text.size() - (hasReturn ? 1 : 0)));
    content_.add("\n");
}

std::optional<RecordingLine> RecordingReader::parse(std::string_view text) {
    std::optional<RecordingLine> line =
        parser_->read(lines_, text, [this](const LineFields& fields) { return readLine(fields); });
    if (!line) {
        return line;
    }
    using Cause = RefusedFrame::Cause;
    Cause cause = Cause::Time;
    try {
        std::visit([&](const auto& frame) { checkOrder(frame); }, *line);
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            cause = Cause::Box;
            refuseBoxesUpsideDown(*frame);
        }
    } catch (const InputError& error) {
        if (auto* frame = std::get_if<SensorFrame>(&*line)) {
            throw RefusedFrame({lines_.place(), error}, cause, std::move(*frame));
        }
        throw InputError(lines_.place(), error);
    }
    return line;
}

void RecordingReader::checkOrder(const TruthFrame& frame) {
    if (lastTruth_ && !(frame.time > *lastTruth_)) {
        throw InputError(
            "time", fmt::format("{} is not later than {}, the time of the truth before", frame.time,
                                *lastTruth_));
    }
    lastTruth_ = frame.time;
}

void RecordingReader::checkOrder(const SensorFrame& frame) {
    order_.check(frame);
    order_.take(frame);
}

}  // namespace Workbench
