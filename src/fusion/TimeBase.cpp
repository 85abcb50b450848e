// SPDX-License-Identifier: Apache-2.0
#include "fusion/TimeBase.h"

#include <cmath>
#include <utility>

namespace Veskar {
namespace {

/// How far a frame may be from the last accepted one, seconds.
constexpr double farthest = 3600.0;
/// How far two frames of one new time base may be apart, seconds.
constexpr double agreement = 60.0;

}  // namespace

TimeBase::Verdict TimeBase::judge(double timestamp) {
    const std::optional<double> previous = std::exchange(heldBack_, std::nullopt);
    if (previous && std::abs(timestamp - *previous) <= agreement) {
        accepted_ = timestamp;
        return Verdict::Restart;
    }
    if (isFar(timestamp)) {
        heldBack_ = timestamp;
        return Verdict::HoldBack;
    }
    accepted_ = timestamp;
    return Verdict::Accept;
}

bool TimeBase::isFar(double timestamp) const {
    return accepted_ && std::abs(timestamp - *accepted_) > farthest;
}

}  // namespace Veskar
