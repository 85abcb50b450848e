// SPDX-License-Identifier: Apache-2.0
// Finds a frame's sensor track by its id.
#pragma once

#include <veskar/Track.h>

#include <memory>
#include <vector>

namespace Veskar {

/// The sensor tracks of one frame by id. Keeps its memory from frame to frame.
class ReportIndex {
public:
    /// @param tracks the frame; must outlive the look-ups
    void assign(const std::vector<std::shared_ptr<Track>>& tracks);

    /// @return the frame's track with that id, the later one of several; null when there is none
    const std::shared_ptr<Track>* find(int id) const;

private:
    struct Entry {
        int id;
        const std::shared_ptr<Track>* track;
    };
    std::vector<Entry> entries_;  ///< by id, equal ids in the order of the frame
};

}  // namespace Veskar
