// SPDX-License-Identifier: Apache-2.0
#include "recording/ExcerptFilter.h"

#include <algorithm>
#include <cmath>

namespace Workbench {

bool ExcerptFilter::takes(const RecordingLine& frame) {
    if (const auto* sensor = std::get_if<SensorFrame>(&frame)) {
        return takesFrame(sensor->received);
    }
    return takesTruth(std::get<TruthFrame>(frame).time);
}

std::optional<double> ExcerptFilter::endOf(std::optional<double> end) const {
    if (!first_ || !std::isfinite(excerpt_.end) || !(end || framesAreOver_)) {
        return end;
    }
    const double cut = *first_ + excerpt_.end;
    return end ? std::min(*end, cut) : cut;
}

bool ExcerptFilter::takesFrame(double received) {
    if (!first_) {
        first_ = received;
    }
    framesAreOver_ = !(received < *first_ + excerpt_.end);
    const bool isWithin = received >= *first_ + excerpt_.start && !framesAreOver_;
    hasFrame_ = hasFrame_ || isWithin;
    return isWithin;
}

bool ExcerptFilter::takesTruth(double time) {
    if (!first_) {
        return excerpt_.start == 0.0;
    }
    truthIsOver_ = !(time < *first_ + excerpt_.end);
    return (excerpt_.start == 0.0 || time >= *first_ + excerpt_.start) && !truthIsOver_;
}

}  // namespace Workbench
