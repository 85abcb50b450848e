// SPDX-License-Identifier: Apache-2.0
// Chooses the lines of a recording that are within an excerpt.
#pragma once

#include "recording/Excerpt.h"
#include "recording/Recording.h"

#include <optional>

namespace Workbench {

/// Lines are shown to it in their order. Sensor frames belong to an excerpt by when they were
/// received, truth by its time. Truth before the first sensor frame is at the start.
class ExcerptFilter {
public:
    /// @param excerpt the part to choose
    /// @param hasTruth whether truth lines are shown
    ExcerptFilter(const Excerpt& excerpt, bool hasTruth)
        : excerpt_(excerpt), truthIsOver_(!hasTruth) {}

    /// @param frame the next line
    /// @return whether it is within the excerpt
    bool takes(const RecordingLine& frame);
    /// @return whether no later line can be
    bool isOver() const { return framesAreOver_ && truthIsOver_; }
    /// @return whether a sensor frame was
    bool hasFrame() const { return hasFrame_; }
    /// @param end until when the sensors were awaited; nothing when the recording does not say it
    /// @return the same of the excerpt
    std::optional<double> endOf(std::optional<double> end) const;

private:
    bool takesFrame(double received);
    bool takesTruth(double time);

    Excerpt excerpt_;
    std::optional<double> first_;  ///< arrival of the first sensor frame, s
    bool framesAreOver_ = false;
    bool truthIsOver_;
    bool hasFrame_ = false;
};

}  // namespace Workbench
