// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedCsv.h"

#include <veskar-host/SensorFrame.h>

#include "HostLibrary.h"
#include "host/reports/JsonLine.h"
#include "io/CsvCells.h"

#include <string_view>

namespace Workbench {
namespace {

void appendGround(LineText& row, const std::optional<GroundPosition>& ground) {
    if (!ground) {
        row += ",,,,,,,";
        return;
    }
    addCell(row, ground->position[0], metreDecimals);
    addCell(row, ground->position[1], metreDecimals);
    addCell(row, ground->covariance(0, 0), estimateDecimals);
    addCell(row, ground->covariance(0, 1), estimateDecimals);
    addCell(row, ground->covariance(1, 1), estimateDecimals);
    addCell(row, ground->velocity[0], metreDecimals);
    addCell(row, ground->velocity[1], metreDecimals);
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

}  // namespace

void appendCsvCells(LineText& row, const FusedFrame& frame, const FusedTrack& track) {
    row.addNumber(frame.time, timeDecimals);
    addCell(row, frame.received, timeDecimals);
    addCell(row, sourceName(frame.source));
    addCell(row, track.id, 0);
    addCell(row, track.confirmed ? "1" : "0");
    addCell(row, track.probability, imageDecimals);
    addCell(row, track.image[0], imageDecimals);
    addCell(row, track.image[1], imageDecimals);
    addCell(row, track.range, metreDecimals);
    appendGround(row, track.ground);
    addCell(row, track.speed, metreDecimals);
    addCell(row, track.direction, angleDecimals);
    addCell(row, track.labels.objectClass.name);
    addCell(row, track.labels.objectClass.probability, ratioDecimals);
    addCell(row, track.labels.color.name);
    addCell(row, track.labels.upperClothingColor.name);
    addCell(row, track.labels.lowerClothingColor.name);
    addCell(row, track.geo ? std::optional<double>(track.geo->latitude) : std::nullopt,
            geoDecimals);
    addCell(row, track.geo ? std::optional<double>(track.geo->longitude) : std::nullopt,
            geoDecimals);
    addCell(row, track.age, timeDecimals);
    addCell(row, idsOf(track, Veskar::VideoObject));
    addCell(row, idsOf(track, Veskar::Radar));
    addCell(row, tagsOf(track));
}

std::string csvColumns() {
    return "time,received,source,id,confirmed,probability,u,v,range,x,y,varX,covXY,varY,vx,vy,"
           "speed,direction,class,classProbability,color,upperClothingColor,lowerClothingColor,"
           "latitude,longitude,age,videoIds,radarIds,tags";
}

std::string csvHeader() {
    return csvColumns() + "\n";
}

void appendCsvRows(LineText& text, const FusedFrame& frame) {
    for (const FusedTrack& track : frame.tracks) {
        appendCsvCells(text, frame, track);
        text += '\n';
    }
}

}  // namespace Workbench
