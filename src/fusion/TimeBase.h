// SPDX-License-Identifier: Apache-2.0
// Tells a wrong time stamp from a new time base.
#pragma once

#include <optional>

namespace Veskar {

/// Judges the time stamps of arriving frames, all sources alike.
///
/// One stamp far from the others is a fault: predicting to it and back would lose the precision of
/// every estimate. Two in a row that agree with each other are a new time base.
class TimeBase {
public:
    /// What to do with a frame.
    enum class Verdict {
        Accept,    ///< fuse it; a frame held back before is dropped
        HoldBack,  ///< keep it until the next frame arrives; one held back before is dropped
        Restart    ///< the time base has changed: start afresh with the held frame, then this one
    };

    /// @param timestamp of the frame that arrives, finite, seconds
    /// @return what to do with it
    Verdict judge(double timestamp);
    /// @param timestamp of a frame, seconds
    /// @return whether it is far from the last accepted frame
    bool isFar(double timestamp) const;

private:
    std::optional<double> accepted_;  ///< stamp of the last accepted frame
    std::optional<double> heldBack_;  ///< stamp of the frame held back, if there is one
};

}  // namespace Veskar
