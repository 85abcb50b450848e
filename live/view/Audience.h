// SPDX-License-Identifier: Apache-2.0
// Who watches, and what they have selected.
#pragma once

#include "live/view/Subject.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>
#include <vector>

namespace Veskar::Live {

/// The server adds and removes viewers; the fusion asks for whom it works. May be used by any
/// thread.
class Audience {
public:
    /// @param subject what the viewer has selected
    void add(const std::optional<Subject>& subject);
    /// @param subject as it was added
    void remove(const std::optional<Subject>& subject);

    /// @return whether there is a viewer
    bool isThere() const { return size_ > 0; }
    /// @return how many viewers there are
    std::size_t size() const { return size_; }
    /// @return a number that changes with the selected tracks
    std::uint64_t version() const { return version_; }
    /// @return the selected tracks, each once
    std::vector<Subject> subjects() const;

private:
    std::atomic<std::size_t> size_{0};
    std::atomic<std::uint64_t> version_{0};
    mutable std::mutex mutex_;
    std::multiset<Subject> subjects_;
};

}  // namespace Veskar::Live
