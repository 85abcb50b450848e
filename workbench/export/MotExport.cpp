// SPDX-License-Identifier: Apache-2.0
#include "export/MotExport.h"

#include "host/reports/JsonLine.h"

#include <fmt/format.h>

namespace Workbench {
namespace {

const std::filesystem::path truthFiles = "gt/mot_challenge";
const std::filesystem::path trackerFiles = "trackers/mot_challenge";
const std::string benchmark = "MOT15-train";
constexpr int pixelDecimals = 2;

/// What stands for unknown boxes and places.
constexpr double unknown = -1.0;

enum class Place { Stated, Unknown };

/// frame,id,left,top,width,height,confidence,x,y,z: frames and pixels count from 1.
void appendRow(LineText& text, int number, const FusedTrack& track,
               const std::optional<PixelBox>& box, double confidence, Place place) {
    text.addInteger(number + 1);
    text += ',';
    text.addInteger(track.id);
    const auto add = [&](double value, int decimals) {
        text += ',';
        text.addNumber(value, decimals);
    };
    add(box ? box->left + 1.0 : unknown, pixelDecimals);
    add(box ? box->top + 1.0 : unknown, pixelDecimals);
    add(box ? box->width : unknown, pixelDecimals);
    add(box ? box->height : unknown, pixelDecimals);
    add(confidence, ratioDecimals);
    const bool isStated = place == Place::Stated;
    add(isStated ? track.ground->position[0] : unknown, metreDecimals);
    add(isStated ? track.ground->position[1] : unknown, metreDecimals);
    add(isStated ? 0.0 : unknown, metreDecimals);
    text += '\n';
}

}  // namespace

void MotExport::writeTruth(int number, const std::vector<FusedTrack>& tracks) {
    LineText& text = emptyText();
    for (const FusedTrack& track : tracks) {
        const auto box = boxOf(track);
        appendRow(text, number, track, box, box ? 1.0 : 0.0, Place::Stated);
    }
    output().file(truthFiles / benchmark / sequence() / "gt/gt.txt").write(text.view());
}

void MotExport::writeTracker(const std::string& tracker, int number,
                             const std::vector<FusedTrack>& tracks) {
    const std::filesystem::path directory = trackerFiles / benchmark / tracker;
    const std::string name = sequence() + ".txt";
    LineText& boxes = emptyText();
    for (const FusedTrack& track : tracks) {
        if (const auto box = boxOf(track)) {
            appendRow(boxes, number, track, box, track.probability, Place::Unknown);
        }
    }
    output().file(directory / "data" / name).write(boxes.view());
    LineText& places = emptyText();
    for (const FusedTrack& track : tracks) {
        appendRow(places, number, track, boxOf(track), track.probability, Place::Stated);
    }
    output().file(directory / "ground" / name).write(places.view());
}

void MotExport::describe() {
    output()
        .file(truthFiles / benchmark / sequence() / "seqinfo.ini")
        .write(fmt::format("[Sequence]\nname={}\nimDir=img1\nframeRate={:.6g}\nseqLength={}\n"
                           "imWidth={}\nimHeight={}\nimExt=.jpg\n",
                           sequence(), frameRate(), frames(), header().camera.resolution[0],
                           header().camera.resolution[1]));
    writeSequenceMap(truthFiles / "seqmaps" / (benchmark + ".txt"), "name\n", sequence() + "\n");
}

}  // namespace Workbench
