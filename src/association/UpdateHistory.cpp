// SPDX-License-Identifier: Apache-2.0
#include "association/UpdateHistory.h"

#include "track/Dereference.h"

#include <algorithm>
#include <utility>

namespace Veskar {
namespace {

/// A coasting time up to which a track counts as updated: stamps are rounded, s.
constexpr double updatedLimit = 0.01;

}  // namespace

/// Walks over the known tracks and the updated ones side by side; both are in the order of ids.
void UpdateHistory::add(Source source, const std::vector<std::shared_ptr<Track>>& reports) {
    if (source != Source::Radar && source != Source::VideoObject) {
        return;
    }
    updatedIds_.clear();
    for (const std::shared_ptr<Track>& pointer : reports) {
        const Track& report = dereference(pointer);
        if (report.coastingTime <= updatedLimit) {
            updatedIds_.push_back(report.id);
        }
    }
    std::sort(updatedIds_.begin(), updatedIds_.end());
    updatedIds_.erase(std::unique(updatedIds_.begin(), updatedIds_.end()), updatedIds_.end());

    merged_.clear();
    auto updated = updatedIds_.cbegin();
    for (const Entry& known : entries_[indexOf(source)]) {
        for (; updated != updatedIds_.cend() && *updated < known.id; ++updated) {
            merged_.push_back({*updated, 1U});
        }
        std::uint32_t frames = known.frames << 1U;
        if (updated != updatedIds_.cend() && *updated == known.id) {
            frames |= 1U;
            ++updated;
        }
        if (frames != 0) {
            merged_.push_back({known.id, frames});
        }
    }
    for (; updated != updatedIds_.cend(); ++updated) {
        merged_.push_back({*updated, 1U});
    }
    std::swap(entries_[indexOf(source)], merged_);
}

void UpdateHistory::clear() {
    for (Entries& entries : entries_) {
        entries.clear();
    }
}

std::uint32_t UpdateHistory::framesOf(Source source, int id) const {
    const Entries& entries = entries_[indexOf(source)];
    const auto found =
        std::lower_bound(entries.begin(), entries.end(), id,
                         [](const Entry& entry, int wanted) { return entry.id < wanted; });
    return found != entries.end() && found->id == id ? found->frames : 0;
}

}  // namespace Veskar
