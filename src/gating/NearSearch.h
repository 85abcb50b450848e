// SPDX-License-Identifier: Apache-2.0
// Which of many tracks may be near another one.
#pragma once

#include "arithmetic/Lanes.h"
#include "gating/CoarseGate.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Veskar {

/// Tracks that many others are compared with, by their positions.
///
/// They are ordered along the axis on which they spread most in units of their reaches, so that a
/// search only looks at those whose interval there overlaps (sweep and prune; Ericson: Real-Time
/// Collision Detection, 2005, section 7.5).
class NearSearch {
public:
    /// Replaces the tracks. Allocates nothing once warm.
    ///
    /// @param count their number
    /// @param marginalsOf answers the marginals of track 0, 1, ... count - 1; called repeatedly
    template <typename MarginalsOf>
    void assign(std::size_t count, MarginalsOf marginalsOf) {
        start(count);
        for (std::size_t number = 0; number < count; ++number) {
            measure(marginalsOf(number));
        }
        chooseAxis();
        for (std::size_t number = 0; number < count; ++number) {
            addInterval(number, marginalsOf(number));
        }
        order();
        for (const Interval& interval : intervals_) {
            append(interval, marginalsOf(interval.number));
        }
        finish();
    }

    /// @param marginals another track
    /// @param visit called in ascending order with the number of every track that is not far from
    ///              it by its positions, see CoarseGate::areFar; must not search itself
    template <typename Visit>
    void forEachNear(const Marginals& marginals, Visit visit) const {
        search(marginals);
        for (std::size_t word = 0; word < found_.size(); ++word) {
            for (std::uint64_t bits = found_[word]; bits != 0; bits &= bits - 1) {
                visit(word * wordSize + lowestBit(bits));
            }
        }
    }

private:
    static constexpr std::size_t axisCount = Marginals::positionCount;
    static constexpr std::size_t wordSize = 64;

    /// The part of the axis that a track reaches. Two tracks whose intervals do not overlap are far
    /// from each other: the root of a sum of squares is at most the sum of the roots.
    struct Interval {
        double low;
        double high;
        std::size_t number;
    };

    /// Some tracks that follow each other on the axis.
    struct Block {
        static constexpr std::size_t capacity = std::size_t{2} * laneCount;
        using Coordinate = std::array<double, capacity>;

        std::array<Coordinate, axisCount> mean;
        std::array<Coordinate, axisCount> reach;
        std::array<std::size_t, capacity> numbers;
        std::size_t size;        ///< how many there are
        double highestUpToHere;  ///< of the intervals in this block and those before
        double lowestFromHere;   ///< of those in this block and those after
    };

    /// The track that is searched for, in all lanes.
    struct Wanted {
        std::array<Lanes, axisCount> mean;
        std::array<Lanes, axisCount> reach;
    };

    static std::size_t lowestBit(std::uint64_t bits) {
        return static_cast<std::size_t>(__builtin_ctzll(bits));
    }
    Interval intervalOf(const Marginals& marginals) const;
    void start(std::size_t count);
    void measure(const Marginals& marginals);
    void chooseAxis();
    void addInterval(std::size_t number, const Marginals& marginals);
    void order();
    void append(const Interval& interval, const Marginals& marginals);
    void finish();
    void search(const Marginals& marginals) const;
    void mark(const Block& block, const Wanted& wanted) const;

    struct Extent {
        double lowest;
        double highest;
        double reach;  ///< sum
    };
    std::array<Extent, axisCount> extents_;
    std::size_t axis_ = 0;
    std::vector<Interval> intervals_;
    std::vector<Block> blocks_;
    std::vector<Block> unlimited_;              ///< of tracks whose interval is the whole axis
    mutable std::vector<std::uint64_t> found_;  ///< a bit for every track; for one search
};

}  // namespace Veskar
