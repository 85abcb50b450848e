// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingWriter.h"

#include "host/reports/JsonLine.h"

namespace Workbench {
namespace {

void object(LineText& text, const TruthObject& value) {
    text += "{\"id\":";
    text.addInteger(value.id);
    text += ",\"class\":";
    text.addQuoted(value.className);
    appendVector(text, "position", value.position, metreDecimals);
    appendVector(text, "velocity", value.velocity, metreDecimals);
    if (value.size) {
        const Eigen::Vector3d& size = *value.size;
        text.addMember("size", {size[0], size[1], size[2]}, metreDecimals);
    }
    if (value.centre) {
        appendVector(text, "centre", *value.centre, metreDecimals);
    }
    text += value.inVideo ? "" : ",\"video\":false";
    text += value.inRadar ? "" : ",\"radar\":false";
    text += '}';
}

}  // namespace

std::string toJsonLine(const TruthFrame& frame) {
    LineText text;
    text += "{\"source\":\"truth\"";
    text.addMember("time", frame.time, timeDecimals);
    text += ",\"objects\":[";
    for (std::size_t i = 0; i < frame.objects.size(); ++i) {
        text += i == 0 ? "" : ",";
        object(text, frame.objects[i]);
    }
    text += "]}\n";
    return text.string();
}

}  // namespace Workbench
