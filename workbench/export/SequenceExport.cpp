// SPDX-License-Identifier: Apache-2.0
#include "export/SequenceExport.h"

#include <veskar/ImagePlane.h>

#include "io/LineReader.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace Workbench {
namespace {

std::string asFileName(std::string name) {
    for (char& character : name) {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(character)) != 0 ||
                             character == '-' || character == '_';
        character = isPlain ? character : '_';
    }
    return name.empty() ? "recording" : name;
}

}  // namespace

SequenceExport::SequenceExport(const std::string& directory, const RecordingHeader& header)
    : header_(header),
      camera_(header.camera.build()),
      output_(directory),
      sequence_(asFileName(header.name)) {}

void SequenceExport::atMoment(double time) {
    for (const std::string& layer : pictures_.layers()) {
        writeTracker(layer, frames_, pictures_.at(layer, time));
    }
    first_ = frames_ == 0 ? time : first_;
    last_ = time;
    ++frames_;
}

void SequenceExport::add(const std::string& layer, const FusedFrame& frame) {
    if (layer == "truth") {
        hasTruth_ = true;
        writeTruth(frames_ - 1, frame.tracks);
    } else {
        pictures_.replace(layer, frame);
    }
}

void SequenceExport::finish() {
    if (hasTruth_) {
        describe();
    }
    output_.commit();
}

std::optional<PixelBox> SequenceExport::boxOf(const FusedTrack& track) const {
    const double left = std::max(track.box.left, -1.0);
    const double bottom = std::max(track.box.bottom, -1.0);
    const double width = std::min(track.box.right, 1.0) - left;
    const double height = std::min(track.box.top, 1.0) - bottom;
    if (!(width > 0.0 && height > 0.0)) {
        return std::nullopt;
    }
    Eigen::Vector4d box(left, width, bottom + height, -height);
    Veskar::transformCameraToScreen(box, camera_);
    return PixelBox{box[0], box[2], box[1], box[3]};
}

void SequenceExport::writeSequenceMap(const std::filesystem::path& name, std::string_view head,
                                      const std::string& line) {
    std::string text(head);
    const std::filesystem::path old = output_.place(name);
    const std::string_view named = std::string_view(line).substr(0, sequence_.size() + 1);
    if (std::filesystem::exists(old)) {
        LineReader lines(old);
        for (std::string_view other; lines.next(other);) {
            const std::string whole = std::string(other) + "\n";
            const bool isReplaced = whole.compare(0, named.size(), named) == 0;
            text += isReplaced || whole == head ? "" : whole;
        }
    }
    output_.file(name).write(text + line);
}

double SequenceExport::frameRate() const {
    return last_ > first_ ? (frames_ - 1) / (last_ - first_) : 0.0;
}

LineText& SequenceExport::emptyText() {
    text_.clear();
    return text_;
}

}  // namespace Workbench
