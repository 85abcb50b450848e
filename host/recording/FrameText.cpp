// SPDX-License-Identifier: Apache-2.0
#include "host/recording/FrameText.h"

#include "host/reports/JsonLine.h"

namespace Veskar::Host {
namespace Internal {
namespace {

void base(LineText& text, const ReportBase& report) {
    text += "{\"id\":";
    text.addInteger(report.id);
    if (report.coasting > 0.0) {
        text.addMember("coasting", report.coasting, timeDecimals);
    }
    if (!report.confirmed) {
        text += ",\"confirmed\":false";
    }
}

void track(LineText& text, const VideoReport& report) {
    base(text, report);
    appendBox(text, report.box);
    if (report.velocity) {
        appendVector(text, "velocity", *report.velocity, imageDecimals);
    }
    text.addMember("age", report.age, timeDecimals);
    appendLabels(text, report.labels);
    text += '}';
}

void track(LineText& text, const RadarReport& report) {
    base(text, report);
    text.addMember("range", report.range, metreDecimals);
    text.addMember("azimuth", report.azimuth, angleDecimals);
    if (report.speed && report.direction) {
        text.addMember("speed", *report.speed, metreDecimals);
        text.addMember("direction", *report.direction, angleDecimals);
    }
    if (report.radialSpeed) {
        text.addMember("radialSpeed", *report.radialSpeed, metreDecimals);
    }
    appendLabel(text, "class", report.objectClass);
    text += '}';
}

void track(LineText& text, const ReadyEstimate& report) {
    base(text, report);
    text += ",\"state\":[";
    for (Eigen::Index i = 0; i < 6; ++i) {
        text += i == 0 ? "" : ",";
        text.addNumber(report.state[i], estimateDecimals);
    }
    text += "],\"covariance\":[";
    for (Eigen::Index row = 0; row < 6; ++row) {
        for (Eigen::Index column = row; column < 6; ++column) {
            text += row == 0 && column == 0 ? "" : ",";
            text.addNumber(report.covariance(row, column), estimateDecimals);
        }
    }
    text += ']';
    if (report.box) {
        appendBox(text, *report.box);
    }
    appendLabels(text, report.labels);
    text += '}';
}

}  // namespace

void append(LineText& text, const SensorFrame& frame) {
    text += "{\"source\":\"";
    text += sourceName(frame.source);
    text += '"';
    text.addMember("time", frame.time, timeDecimals);
    if (frame.received != frame.time) {
        text.addMember("received", frame.received, timeDecimals);
    }
    text += ",\"tracks\":[";
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        text += i == 0 ? "" : ",";
        std::visit([&](const auto& report) { track(text, report); }, frame.tracks[i]);
    }
    text += "]}\n";
}

}  // namespace Internal

std::string toJsonLine(const SensorFrame& frame) {
    Internal::LineText text;
    append(text, frame);
    return text.string();
}

}  // namespace Veskar::Host
