// SPDX-License-Identifier: Apache-2.0
#include "export/KittiExport.h"

#include <veskar/Vocabulary.h>

#include "host/reports/JsonLine.h"

#include <initializer_list>
#include <map>

#include <fmt/format.h>

namespace Workbench {
namespace {

const std::filesystem::path kittiTruthFiles = "gt/kitti/kitti_2d_box_train";
const std::filesystem::path kittiTrackerFiles = "trackers/kitti/kitti_2d_box_train";

/// The word of the benchmark for a class.
const char* typeOf(const std::string& className) {
    namespace Vocabulary = Veskar::Vocabulary;
    static const std::map<std::string, const char*> types{
        {Vocabulary::human, "Pedestrian"},
        {Vocabulary::car, "Car"},
        {Vocabulary::vehicle, "Car"},
        {Vocabulary::truck, "Truck"},
        {Vocabulary::motorcycleBicycle, "Cyclist"},
        {Vocabulary::bike, "Cyclist"}};
    const auto found = types.find(className);
    return found == types.end() ? "Misc" : found->second;
}

}  // namespace

/// frame id type truncated occluded alpha left top right bottom height width length x y z rotation
void KittiExport::appendRow(LineText& text, int number, const FusedTrack& track,
                            const std::string& visibility) const {
    text += fmt::format("{} {} {} {} -10", number, track.id, typeOf(track.labels.objectClass.name),
                        visibility);
    const auto add = [&](std::initializer_list<double> values, int decimals) {
        for (const double value : values) {
            text += ' ';
            text.addNumber(value, decimals);
        }
    };
    if (const auto box = boxOf(track)) {
        add({box->left, box->top, box->left + box->width, box->top + box->height}, pixelDecimals);
    } else {
        text += " -1 -1 -1 -1";
    }
    text += " -1 -1 -1";  // the size
    const Eigen::Vector3d& camera = header().camera.mounting.position;
    const Eigen::Vector2d& place = track.ground->position;
    add({camera[1] - place[1], camera[2], place[0] - camera[0]}, metreDecimals);
    text += " -10";
}

void KittiExport::writeTruth(int number, const std::vector<FusedTrack>& tracks) {
    LineText& text = emptyText();
    for (const FusedTrack& track : tracks) {
        appendRow(text, number, track, boxOf(track) ? "0 0" : "0 3");
        text += '\n';
    }
    output().file(kittiTruthFiles / "label_02" / (sequence() + ".txt")).write(text.view());
}

void KittiExport::writeTracker(const std::string& tracker, int number,
                               const std::vector<FusedTrack>& tracks) {
    LineText& text = emptyText();
    for (const FusedTrack& track : tracks) {
        appendRow(text, number, track, "-1 -1");
        text += ' ';
        text.addNumber(track.probability, ratioDecimals);
        text += '\n';
    }
    output().file(kittiTrackerFiles / tracker / "data" / (sequence() + ".txt")).write(text.view());
}

void KittiExport::describe() {
    writeSequenceMap(kittiTruthFiles / "evaluate_tracking.seqmap.training", "",
                     fmt::format("{} empty 000000 {:06}\n", sequence(), frames()));
}

}  // namespace Workbench
