// SPDX-License-Identifier: Apache-2.0
// A track's class without the copy that getClassName makes.
#pragma once

#include <veskar/Track.h>

#include <string>

namespace Veskar {

/// The text that Track::getClassName answers, for comparisons in hot paths.
///
/// Refers to the string inside the track where the library knows how the class is found, that is
/// for Track and SystemTrack themselves. A user's own subclass is asked through its getter. Must
/// not outlive the track or a change of its labels.
class ClassLabel {
public:
    /// @param track a sensor track or a system track
    explicit ClassLabel(const Track& track);
    ClassLabel(const ClassLabel&) = delete;
    ClassLabel& operator=(const ClassLabel&) = delete;

    /// @return the class
    const std::string& text() const { return *label_; }

private:
    std::string answer_;        ///< a subclass's answer; otherwise empty
    const std::string* label_;  ///< into the track, or to `answer_`
};

}  // namespace Veskar
