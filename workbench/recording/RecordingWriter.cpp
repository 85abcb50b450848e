// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingWriter.h"

#include "io/NumberText.h"
#include "recording/Header.h"
#include "recording/JsonLine.h"

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

void base(std::string& text, const ReportBase& report) {
    text += "{\"id\":";
    appendInteger(text, report.id);
    if (report.coasting > 0.0) {
        appendMember(text, "coasting", report.coasting, timeDecimals);
    }
    if (!report.confirmed) {
        text += ",\"confirmed\":false";
    }
}

void track(std::string& text, const VideoReport& report) {
    base(text, report);
    appendBox(text, report.box);
    if (report.velocity) {
        appendMember(text, "velocity", *report.velocity, imageDecimals);
    }
    appendMember(text, "age", report.age, timeDecimals);
    appendLabels(text, report.labels);
    text += '}';
}

void track(std::string& text, const RadarReport& report) {
    base(text, report);
    appendMember(text, "range", report.range, metreDecimals);
    appendMember(text, "azimuth", report.azimuth, angleDecimals);
    if (report.speed && report.direction) {
        appendMember(text, "speed", *report.speed, metreDecimals);
        appendMember(text, "direction", *report.direction, angleDecimals);
    }
    if (report.radialSpeed) {
        appendMember(text, "radialSpeed", *report.radialSpeed, metreDecimals);
    }
    appendLabel(text, "class", report.objectClass);
    text += '}';
}

void track(std::string& text, const ReadyEstimate& report) {
    base(text, report);
    text += ",\"state\":[";
    for (Eigen::Index i = 0; i < 6; ++i) {
        text += i == 0 ? "" : ",";
        appendNumber(text, report.state[i], estimateDecimals);
    }
    text += "],\"covariance\":[";
    for (Eigen::Index row = 0; row < 6; ++row) {
        for (Eigen::Index column = row; column < 6; ++column) {
            text += row == 0 && column == 0 ? "" : ",";
            appendNumber(text, report.covariance(row, column), estimateDecimals);
        }
    }
    text += ']';
    if (report.box) {
        appendBox(text, *report.box);
    }
    appendLabels(text, report.labels);
    text += '}';
}

void object(std::string& text, const TruthObject& value) {
    text += "{\"id\":";
    appendInteger(text, value.id);
    text += ",\"class\":";
    appendQuoted(text, value.className);
    appendMember(text, "position", value.position, metreDecimals);
    appendMember(text, "velocity", value.velocity, metreDecimals);
    if (value.size) {
        const Eigen::Vector3d& size = *value.size;
        appendMember(text, "size", {size[0], size[1], size[2]}, metreDecimals);
    }
    if (value.centre) {
        appendMember(text, "centre", *value.centre, metreDecimals);
    }
    text += value.inVideo ? "" : ",\"video\":false";
    text += value.inRadar ? "" : ",\"radar\":false";
    text += '}';
}

}  // namespace

std::string lineOf(const RecordingHeader& header) {
    return toJson(header).dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string lineOf(const SensorFrame& frame) {
    std::string text = "{\"source\":\"";
    text += sourceName(frame.source);
    text += '"';
    appendMember(text, "time", frame.time, timeDecimals);
    if (frame.received != frame.time) {
        appendMember(text, "received", frame.received, timeDecimals);
    }
    text += ",\"tracks\":[";
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        text += i == 0 ? "" : ",";
        std::visit([&](const auto& report) { track(text, report); }, frame.tracks[i]);
    }
    text += "]}\n";
    return text;
}

std::string lineOf(const TruthFrame& frame) {
    std::string text = "{\"source\":\"truth\"";
    appendMember(text, "time", frame.time, timeDecimals);
    text += ",\"objects\":[";
    for (std::size_t i = 0; i < frame.objects.size(); ++i) {
        text += i == 0 ? "" : ",";
        object(text, frame.objects[i]);
    }
    text += "]}\n";
    return text;
}

}  // namespace Workbench
