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
    const std::optional<double> previous = std::exchange(heldBack, std::nullopt);
    if (previous && std::abs(timestamp - *previous) <= agreement) {
        accepted = timestamp;
        return Verdict::Restart;
    }
    if (accepted && std::abs(timestamp - *accepted) > farthest) {
        heldBack = timestamp;
        return Verdict::HoldBack;
    }
    accepted = timestamp;
    return Verdict::Accept;
}

}  // namespace Veskar
