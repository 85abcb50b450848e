// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Assignment.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <utility>

namespace Workbench {
namespace {

constexpr double unreached = std::numeric_limits<double>::infinity();

/// The two greatest gains of a row or column.
struct Best {
    double first = 0.0;
    double second = 0.0;

    void take(double value) {
        second = std::max(second, std::min(first, value));
        first = std::max(first, value);
    }
};

/// Assigns the rows one after the other along shortest augmenting paths (Jonker, Volgenant: "A
/// shortest augmenting path algorithm for dense and sparse linear assignment problems", Computing
/// 38, 1987). The cost of a pair is its negative gain; a row may stay alone at no cost.
class Assignment {
public:
    Assignment(std::size_t rows, std::size_t columns, const std::vector<Gain>& gains)
        : gain_(gains), pairOf_(rows, none), columns_(columns) {
        assignDominant();
        openTheRest();
        for (std::size_t row = 0; row < rows; ++row) {
            if (begin_[row] < begin_[row + 1]) {
                augment(static_cast<int>(row));
            }
        }
    }

    std::vector<std::size_t> pairs() const {
        std::vector<std::size_t> pairs;
        pairs.reserve(pairOf_.size());
        std::copy_if(pairOf_.begin(), pairOf_.end(), std::back_inserter(pairs),
                     [](std::size_t pair) { return pair != none; });
        return pairs;
    }

private:
    static constexpr std::size_t none = std::numeric_limits<std::size_t>::max();

    struct Column {
        int row = -1;             ///< assigned; -1: none
        std::size_t pair = none;  ///< last one on the shortest path to it
        double price = 0.0;
        double distance = unreached;  ///< from the row that is being assigned
        bool isScanned = false;
        bool isFixed = false;  ///< belongs to a row in every best assignment
    };

    /// One of a row and a column that are not fixed.
    struct OpenGain {
        double value;
        int column;
        std::size_t pair;
    };

    Column& column(int index) { return columns_[static_cast<std::size_t>(index)]; }
    double& rowPrice(int row) { return rowPrice_[static_cast<std::size_t>(row)]; }
    std::size_t& pairOf(int row) { return pairOf_[static_cast<std::size_t>(row)]; }

    int columnOf(std::size_t pair) const { return pair == none ? -1 : gain_[pair].column; }

    /// Assigns every pair that gains more than the second best pairs of its row and of its column
    /// together: whatever else both got, it would be less. Most pairs are such, because a track
    /// is much more similar to its own object than to others.
    void assignDominant() {
        std::vector<Best> ofRow(pairOf_.size());
        std::vector<Best> ofColumn(columns_.size());
        for (const Gain& gain : gain_) {
            ofRow[static_cast<std::size_t>(gain.row)].take(gain.value);
            ofColumn[static_cast<std::size_t>(gain.column)].take(gain.value);
        }
        for (std::size_t pair = 0; pair < gain_.size(); ++pair) {
            const Gain& gain = gain_[pair];
            const Best& row = ofRow[static_cast<std::size_t>(gain.row)];
            const Best& other = ofColumn[static_cast<std::size_t>(gain.column)];
            if (gain.value == row.first && gain.value == other.first &&
                gain.value > row.second + other.second) {
                pairOf(gain.row) = pair;
                column(gain.column).isFixed = true;
            }
        }
    }

    /// Lists the gains that are still open.
    void openTheRest() {
        rowPrice_.resize(pairOf_.size());
        begin_.resize(pairOf_.size() + 1);
        for (std::size_t pair = 0; pair < gain_.size(); ++pair) {
            const Gain& gain = gain_[pair];
            if (gain.value > 0.0 && pairOf(gain.row) == none && !column(gain.column).isFixed) {
                open_.push_back({gain.value, gain.column, pair});
                ++begin_[static_cast<std::size_t>(gain.row) + 1];
            }
        }
        std::partial_sum(begin_.begin(), begin_.end(), begin_.begin());
    }

    /// Reaches the columns of a row that is at a distance, as far as they are nearer than a limit.
    void scan(int row, double distance, double limit) {
        const std::size_t end = begin_[static_cast<std::size_t>(row) + 1];
        for (std::size_t k = begin_[static_cast<std::size_t>(row)]; k < end; ++k) {
            const OpenGain& gain = open_[k];
            Column& to = column(gain.column);
            const double reached = distance - gain.value - rowPrice(row) - to.price;
            if (!to.isScanned && reached < std::min(to.distance, limit)) {
                if (to.distance == unreached) {
                    reached_.push_back(gain.column);
                }
                to.distance = reached;
                to.pair = gain.pair;
                frontier_.emplace_back(reached, gain.column);
                std::push_heap(frontier_.begin(), frontier_.end(), std::greater<>());
            }
        }
    }

    /// Takes the nearest column out of the frontier, if it is nearer than a limit; otherwise -1.
    int takeNearest(double limit) {
        // A column that was reached again, on a shorter path, is in the frontier several times.
        while (!frontier_.empty() && frontier_.front().first < limit) {
            const int nearest = frontier_.front().second;
            std::pop_heap(frontier_.begin(), frontier_.end(), std::greater<>());
            frontier_.pop_back();
            if (!column(nearest).isScanned) {
                return nearest;
            }
        }
        return -1;
    }

    void augment(int start) {
        int row = start;
        double distance = 0.0;
        // Where a row would have to stay alone instead.
        double aloneDistance = unreached;
        int aloneRow = start;
        int free = -1;
        while (free < 0) {
            if (distance - rowPrice(row) < aloneDistance) {
                aloneDistance = distance - rowPrice(row);
                aloneRow = row;
            }
            scan(row, distance, aloneDistance);
            const int nearest = takeNearest(aloneDistance);
            if (nearest < 0) {
                break;
            }
            column(nearest).isScanned = true;
            scanned_.push_back(nearest);
            distance = column(nearest).distance;
            row = column(nearest).row;
            free = row < 0 ? nearest : -1;
        }
        adjustPrices(start, free < 0 ? aloneDistance : distance);
        if (free < 0) {
            free = columnOf(std::exchange(pairOf(aloneRow), none));
        }
        while (free >= 0) {
            const std::size_t pair = column(free).pair;
            column(free).row = gain_[pair].row;
            free = columnOf(std::exchange(pairOf(gain_[pair].row), pair));
        }
        forgetDistances();
    }

    void adjustPrices(int start, double length) {
        rowPrice(start) += length;
        for (const int index : scanned_) {
            Column& scanned = column(index);
            if (scanned.row >= 0) {
                rowPrice(scanned.row) += length - scanned.distance;
                scanned.price -= length - scanned.distance;
            }
        }
    }

    void forgetDistances() {
        for (const int index : reached_) {
            column(index).distance = unreached;
            column(index).isScanned = false;
        }
        reached_.clear();
        scanned_.clear();
        frontier_.clear();
    }

    const std::vector<Gain>& gain_;
    std::vector<std::size_t> pairOf_;  ///< by row: place of its assigned gain
    std::vector<Column> columns_;
    std::vector<double> rowPrice_;
    std::vector<OpenGain> open_;
    std::vector<std::size_t> begin_;                ///< in `open_`, of each row
    std::vector<std::pair<double, int>> frontier_;  ///< heap of distances to columns
    std::vector<int> reached_;                      ///< columns
    std::vector<int> scanned_;
};

}  // namespace

std::vector<std::size_t> assignWithGreatestGain(std::size_t rows, std::size_t columns,
                                                const std::vector<Gain>& gains) {
    return Assignment(rows, columns, gains).pairs();
}

}  // namespace Workbench
