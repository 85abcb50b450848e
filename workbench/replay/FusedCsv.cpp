// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedCsv.h"

#include <veskar-host/SensorFrame.h>

#include "HostLibrary.h"
#include "host/reports/JsonLine.h"

#include <cmath>
#include <string_view>

namespace Workbench {
namespace {

void field(LineText& row, double value, int decimals) {
    row += ',';
    if (std::isfinite(value)) {
        row.addNumber(value, decimals);
    }
}

void field(LineText& row, const std::optional<double>& value, int decimals) {
    field(row, value.value_or(std::nan("")), decimals);
}

void field(LineText& row, std::string_view text) {
    row += ',';
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        row += text;
        return;
    }
    row += '"';
    for (const char c : text) {
        row += c;
        if (c == '"') {
            row += '"';
        }
    }
    row += '"';
}

void appendGround(LineText& row, const std::optional<GroundPosition>& ground) {
    if (!ground) {
        row += ",,,,,,,";
        return;
    }
    field(row, ground->position[0], metreDecimals);
    field(row, ground->position[1], metreDecimals);
    field(row, ground->covariance(0, 0), estimateDecimals);
    field(row, ground->covariance(0, 1), estimateDecimals);
    field(row, ground->covariance(1, 1), estimateDecimals);
    field(row, ground->velocity[0], metreDecimals);
    field(row, ground->velocity[1], metreDecimals);
}

std::string idsOf(const FusedTrack& track, Veskar::Source source) {
    std::string ids;
    for (const Support& support : track.sensors) {
        if (support.source == source) {
            ids += ids.empty() ? "" : " ";
            ids += std::to_string(support.id);
        }
    }
    return ids;
}

std::string tagsOf(const FusedTrack& track) {
    std::string text;
    for (const std::string& tag : track.tags.value_or(std::set<std::string>())) {
        text += text.empty() ? "" : " ";
        text += tag;
    }
    return text;
}

void appendRow(LineText& row, const FusedFrame& frame, const FusedTrack& track) {
    row.addNumber(frame.time, timeDecimals);
    field(row, frame.received, timeDecimals);
    field(row, sourceName(frame.source));
    field(row, track.id, 0);
    field(row, track.confirmed ? "1" : "0");
    field(row, track.probability, imageDecimals);
    field(row, track.image[0], imageDecimals);
    field(row, track.image[1], imageDecimals);
    field(row, track.range, metreDecimals);
    appendGround(row, track.ground);
    field(row, track.speed, metreDecimals);
    field(row, track.direction, angleDecimals);
    field(row, track.labels.objectClass.name);
    field(row, track.labels.objectClass.probability, ratioDecimals);
    field(row, track.labels.color.name);
    field(row, track.labels.upperClothingColor.name);
    field(row, track.labels.lowerClothingColor.name);
    field(row, track.geo ? std::optional<double>(track.geo->latitude) : std::nullopt, geoDecimals);
    field(row, track.geo ? std::optional<double>(track.geo->longitude) : std::nullopt, geoDecimals);
    field(row, track.age, timeDecimals);
    field(row, idsOf(track, Veskar::VideoObject));
    field(row, idsOf(track, Veskar::Radar));
    field(row, tagsOf(track));
    row += '\n';
}

}  // namespace

std::string csvHeader() {
    return "time,received,source,id,confirmed,probability,u,v,range,x,y,varX,covXY,varY,vx,vy,"
           "speed,direction,class,classProbability,color,upperClothingColor,lowerClothingColor,"
           "latitude,longitude,age,videoIds,radarIds,tags\n";
}

void appendCsvRows(LineText& text, const FusedFrame& frame) {
    for (const FusedTrack& track : frame.tracks) {
        appendRow(text, frame, track);
    }
}

}  // namespace Workbench
