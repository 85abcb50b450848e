// SPDX-License-Identifier: Apache-2.0
#include "export/MotExport.h"

#include "host/reports/JsonLine.h"

#include <fmt/format.h>

namespace Workbench {
namespace {

const std::filesystem::path motTruthFiles = "gt/mot_challenge";
const std::filesystem::path motTrackerFiles = "trackers/mot_challenge";
const std::string motBenchmark = "MOT15-train";

/// What stands for unknown boxes and places.
constexpr double motUnknown = -1.0;

enum class MotPlace { Stated, Unknown };

/// frame,id,left,top,width,height,confidence,x,y,z: frames and pixels count from 1.
void appendMotRow(LineText& text, int number, const FusedTrack& track,
                  const std::optional<PixelBox>& box, double confidence, MotPlace place) {
    text.addInteger(number + 1);
    text += ',';
    text.addInteger(track.id);
    const auto add = [&](double value, int decimals) {
        text += ',';
        text.addNumber(value, decimals);
    };
    add(box ? box->left + 1.0 : motUnknown, pixelDecimals);
    add(box ? box->top + 1.0 : motUnknown, pixelDecimals);
    add(box ? box->width : motUnknown, pixelDecimals);
    add(box ? box->height : motUnknown, pixelDecimals);
    add(confidence, ratioDecimals);
    const bool isStated = place == MotPlace::Stated;
    add(isStated ? track.ground->position[0] : motUnknown, metreDecimals);
    add(isStated ? track.ground->position[1] : motUnknown, metreDecimals);
    add(isStated ? 0.0 : motUnknown, metreDecimals);
    text += '\n';
}

}  // namespace

void MotExport::writeTruth(int number, const std::vector<FusedTrack>& tracks) {
    LineText& text = emptyText();
    for (const FusedTrack& track : tracks) {
        const auto box = boxOf(track);
        appendMotRow(text, number, track, box, box ? 1.0 : 0.0, MotPlace::Stated);
    }
    output().file(motTruthFiles / motBenchmark / sequence() / "gt/gt.txt").write(text.view());
}

void MotExport::writeTracker(const std::string& tracker, int number,
                             const std::vector<FusedTrack>& tracks) {
    const std::filesystem::path directory = motTrackerFiles / motBenchmark / tracker;
    const std::string name = sequence() + ".txt";
    LineText& boxes = emptyText();
    for (const FusedTrack& track : tracks) {
        if (const auto box = boxOf(track)) {
            appendMotRow(boxes, number, track, box, track.probability, MotPlace::Unknown);
        }
    }
    output().file(directory / "data" / name).write(boxes.view());
    LineText& places = emptyText();
    for (const FusedTrack& track : tracks) {
        appendMotRow(places, number, track, boxOf(track), track.probability, MotPlace::Stated);
    }
    output().file(directory / "ground" / name).write(places.view());
}

void MotExport::describe() {
    output()
        .file(motTruthFiles / motBenchmark / sequence() / "seqinfo.ini")
        .write(fmt::format("[Sequence]\nname={}\nimDir=img1\nframeRate={:.6g}\nseqLength={}\n"
                           "imWidth={}\nimHeight={}\nimExt=.jpg\n",
                           sequence(), frameRate(), frames(), header().camera.resolution[0],
                           header().camera.resolution[1]));
    writeSequenceMap(motTruthFiles / "seqmaps" / (motBenchmark + ".txt"), "name\n",
                     sequence() + "\n");
}

}  // namespace Workbench
