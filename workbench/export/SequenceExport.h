// SPDX-License-Identifier: Apache-2.0
// What the layouts of tracking benchmarks have in common: numbered frames, a file of truth and one
// for every tracker.
#pragma once

#include <veskar/Camera.h>

#include "export/DirectoryOutput.h"
#include "export/Exporter.h"
#include "export/LayerPictures.h"
#include "host/installation/RecordingHeader.h"
#include "host/json/LineText.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// Digits behind the point of pixels.
constexpr int pixelDecimals = 2;

/// A box in pixels from the left upper corner of the image.
struct PixelBox {
    double left;
    double top;
    double width;
    double height;
};

/// Writes a recording as one sequence of a benchmark, in the directories that TrackEval reads. The
/// moments of Exporter are its frames, every layer but the truth is a tracker. Further recordings
/// that are written to the same directory become further sequences.
class SequenceExport : public Exporter {
public:
    void atMoment(double time) override;
    void add(const std::string& layer, const FusedFrame& frame) override;
    void finish() override;

protected:
    /// @param directory where the files are written
    /// @param header of the recording; must outlive this
    SequenceExport(const std::string& directory, const RecordingHeader& header);

    /// @param number of the frame, from 0
    /// @param tracks the objects of the truth
    virtual void writeTruth(int number, const std::vector<FusedTrack>& tracks) = 0;
    /// @param tracker name of the layer
    /// @param number of the frame, from 0
    /// @param tracks its tracks
    virtual void writeTracker(const std::string& tracker, int number,
                              const std::vector<FusedTrack>& tracks) = 0;
    /// Writes what describes the sequence, when it has a truth.
    virtual void describe() = 0;

    /// @param track a track
    /// @return its box as far as it is inside the image; nothing when it is not
    std::optional<PixelBox> boxOf(const FusedTrack& track) const;
    /// Writes a list of sequences: that of an earlier export, with this one.
    /// @param name the file
    /// @param head its first line, with line end; may be empty
    /// @param line that of this sequence, which begins with its name, with line end
    void writeSequenceMap(const std::filesystem::path& name, std::string_view head,
                          const std::string& line);

    /// @return the name of the recording, as far as it can be the name of a file
    const std::string& sequence() const { return sequence_; }
    /// @return number of frames so far
    int frames() const { return frames_; }
    /// @return frames per second on average
    double frameRate() const;
    const RecordingHeader& header() const { return header_; }
    DirectoryOutput& output() { return output_; }
    /// @return text to be written, empty
    LineText& emptyText();

private:
    const RecordingHeader& header_;
    Veskar::Camera camera_;
    DirectoryOutput output_;
    std::string sequence_;
    LayerPictures pictures_;
    LineText text_;
    int frames_ = 0;
    double first_ = 0.0;  ///< time of the first frame, s
    double last_ = 0.0;   ///< time of the last frame, s
    bool hasTruth_ = false;
};

}  // namespace Workbench
