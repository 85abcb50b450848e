// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/PairNumbers.h"

namespace Workbench {

void PairNumbers::number(NearPairs& near, const Instant& instant) {
    std::vector<Numbered> present;
    present.reserve(near.size());
    for (NearPair& pair : near) {
        const int truth = instant.truths[static_cast<std::size_t>(pair.truth)].number;
        const int track = instant.tracks[static_cast<std::size_t>(pair.track)].number;
        pair.number = numberOf(truth, track);
        present.push_back({truth, track, pair.number});
    }
    for (const Numbered& pair : present_) {
        runs_[static_cast<std::size_t>(pair.truth)] = Run();
    }
    present_ = std::move(present);
    next_ = 0;
    for (std::size_t k = 0; k < present_.size(); ++k) {
        const auto truth = static_cast<std::size_t>(present_[k].truth);
        if (truth >= runs_.size()) {
            runs_.resize(truth + 1);
        }
        Run& run = runs_[truth];
        run = {run.end == 0 ? k : run.begin, k + 1};
    }
}

int PairNumbers::numberOf(int truth, int track) {
    // Mostly the pairs come in the same order again.
    if (next_ < present_.size() && present_[next_].truth == truth &&
        present_[next_].track == track) {
        return present_[next_++].pair;
    }
    const auto place = static_cast<std::size_t>(truth);
    const Run run = place < runs_.size() ? runs_[place] : Run();
    for (std::size_t k = run.begin; k < run.end; ++k) {
        if (present_[k].track == track) {
            next_ = k + 1;
            return present_[k].pair;
        }
    }
    const std::uint64_t key =
        std::uint64_t{static_cast<std::uint32_t>(truth)} << 32 | static_cast<std::uint32_t>(track);
    return numbers_.try_emplace(key, static_cast<int>(numbers_.size())).first->second;
}

}  // namespace Workbench
