// SPDX-License-Identifier: Apache-2.0
#include "gating/NearSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Veskar {
namespace {

constexpr double infinitelyFar = std::numeric_limits<double>::infinity();

bool isLimited(double reach) {
    return reach >= 0.0 && reach < infinitelyFar;
}

}  // namespace

/// A little wider than it is, so that rounding leaves nothing out.
NearSearch::Interval NearSearch::intervalOf(const Marginals& marginals) const {
    const double mean = marginals.mean[axis_];
    const double reach = marginals.reach[axis_];
    if (!isLimited(reach)) {
        return {-infinitelyFar, infinitelyFar, 0};
    }
    const double half = std::sqrt(reach) * (1.0 + 1e-9) + std::abs(mean) * 1e-15 + 1e-150;
    return {mean - half, mean + half, 0};
}

void NearSearch::start(std::size_t count) {
    extents_.fill({infinitelyFar, -infinitelyFar, 0.0});
    intervals_.clear();
    blocks_.clear();
    unlimited_.clear();
    found_.assign((count + wordSize - 1) / wordSize, 0);
}

void NearSearch::measure(const Marginals& marginals) {
    for (std::size_t axis = 0; axis < axisCount; ++axis) {
        if (isLimited(marginals.reach[axis])) {
            Extent& extent = extents_[axis];
            extent.lowest = std::min(extent.lowest, marginals.mean[axis]);
            extent.highest = std::max(extent.highest, marginals.mean[axis]);
            extent.reach += marginals.reach[axis];
        }
    }
}

void NearSearch::chooseAxis() {
    const auto spreadOf = [this](std::size_t axis) {
        const double width = extents_[axis].highest - extents_[axis].lowest;
        return width > 0.0 ? width * width / extents_[axis].reach : 0.0;
    };
    axis_ = 0;
    for (std::size_t axis = 1; axis < axisCount; ++axis) {
        axis_ = spreadOf(axis) > spreadOf(axis_) ? axis : axis_;
    }
}

void NearSearch::addInterval(std::size_t number, const Marginals& marginals) {
    Interval interval = intervalOf(marginals);
    interval.number = number;
    intervals_.push_back(interval);
}

/// By their middles.
void NearSearch::order() {
    std::sort(intervals_.begin(), intervals_.end(),
              [](const Interval& a, const Interval& b) { return a.low + a.high < b.low + b.high; });
}

void NearSearch::append(const Interval& interval, const Marginals& marginals) {
    std::vector<Block>& blocks = interval.high < infinitelyFar ? blocks_ : unlimited_;
    if (blocks.empty() || blocks.back().size == Block::capacity) {
        Block next{};
        next.highestUpToHere = blocks.empty() ? -infinitelyFar : blocks.back().highestUpToHere;
        next.lowestFromHere = infinitelyFar;
        blocks.push_back(next);
    }
    Block& block = blocks.back();
    const std::size_t place = block.size++;
    for (std::size_t c = 0; c < axisCount; ++c) {
        block.mean[c][place] = marginals.mean[c];
        block.reach[c][place] = marginals.reach[c];
    }
    block.numbers[place] = interval.number;
    block.highestUpToHere = std::max(block.highestUpToHere, interval.high);
    block.lowestFromHere = std::min(block.lowestFromHere, interval.low);
}

void NearSearch::finish() {
    double lowest = infinitelyFar;
    for (auto block = blocks_.rbegin(); block != blocks_.rend(); ++block) {
        lowest = std::min(lowest, block->lowestFromHere);
        block->lowestFromHere = lowest;
    }
}

/// Sets the bits of the tracks that are not far.
void NearSearch::search(const Marginals& marginals) const {
    std::fill(found_.begin(), found_.end(), 0);
    Wanted wanted;
    for (std::size_t c = 0; c < axisCount; ++c) {
        wanted.mean[c] = lanesOf(marginals.mean[c]);
        wanted.reach[c] = lanesOf(marginals.reach[c]);
    }
    for (const Block& block : unlimited_) {
        mark(block, wanted);
    }
    const Interval interval = intervalOf(marginals);
    auto block = std::partition_point(
        blocks_.begin(), blocks_.end(),
        [&interval](const Block& before) { return before.highestUpToHere < interval.low; });
    for (; block != blocks_.end() && block->lowestFromHere <= interval.high; ++block) {
        mark(*block, wanted);
    }
}

inline void NearSearch::mark(const Block& block, const Wanted& wanted) const {
    unsigned far = 0;
    for (std::size_t first = 0; first < Block::capacity; first += laneCount) {
        IntLanes isFar = lanesOf(std::int64_t{0});
        for (std::size_t c = 0; c < axisCount; ++c) {
            const Lanes d = loadLanes(&block.mean[c][first]) - wanted.mean[c];
            isFar = isFar | (loadLanes(&block.reach[c][first]) + wanted.reach[c] < d * d);
        }
        far |= bitsOf(isFar) << first;
    }
    for (unsigned near = ~far & ((1U << block.size) - 1U); near != 0; near &= near - 1U) {
        const std::size_t number = block.numbers[lowestBit(near)];
        found_[number / wordSize] |= std::uint64_t{1} << (number % wordSize);
    }
}

}  // namespace Veskar
