// SPDX-License-Identifier: Apache-2.0
#include "track/ClassLabel.h"

#include <veskar/SystemTrack.h>

#include "track/ExactType.h"
#include "track/Support.h"

namespace Veskar {
namespace {

/// The track whose own class is the answer of `track`, as far as the library decides that.
const Track& answeringTrack(const Track& track) {
    if (!isExactly<SystemTrack>(track)) {
        return track;
    }
    const auto& system = static_cast<const SystemTrack&>(track);
    const Track* fallback = labelFallback(system, system.classVoted);
    return fallback == nullptr ? track : answeringTrack(*fallback);
}

bool answersFromMember(const Track& track) {
    return isExactly<Track>(track) || isExactly<SystemTrack>(track);
}

}  // namespace

ClassLabel::ClassLabel(const Track& track) : label_(&answer_) {
    const Track& answering = answeringTrack(track);
    if (answersFromMember(answering)) {
        label_ = &answering.className;
    } else {
        answer_ = answering.getClassName();
    }
}

}  // namespace Veskar
