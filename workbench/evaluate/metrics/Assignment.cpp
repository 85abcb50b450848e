// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Assignment.h"

#include <algorithm>
#include <limits>

namespace Workbench {
namespace {

/// Rows and columns connected by positive gains.
struct Group {
    std::vector<int> rows;
    std::vector<int> columns;
};

class Grouping {
public:
    explicit Grouping(const Eigen::MatrixXd& gains)
        : gain_(gains),
          rowSeen_(static_cast<std::size_t>(gains.rows())),
          columnSeen_(static_cast<std::size_t>(gains.cols())) {}

    /// @return the group of a row; empty when the row is in an earlier group or has no partner
    Group groupOf(int row) {
        Group group;
        addRow(row, group);
        for (std::size_t next = 0; next < group.rows.size(); ++next) {
            for (int column = 0; column < gain_.cols(); ++column) {
                if (gain_(group.rows[next], column) > 0.0) {
                    addColumn(column, group);
                }
            }
        }
        return group;
    }

private:
    void addRow(int row, Group& group) {
        if (!rowSeen_[static_cast<std::size_t>(row)]) {
            rowSeen_[static_cast<std::size_t>(row)] = true;
            group.rows.push_back(row);
        }
    }

    void addColumn(int column, Group& group) {
        if (columnSeen_[static_cast<std::size_t>(column)]) {
            return;
        }
        columnSeen_[static_cast<std::size_t>(column)] = true;
        group.columns.push_back(column);
        for (int row = 0; row < gain_.rows(); ++row) {
            if (gain_(row, column) > 0.0) {
                addRow(row, group);
            }
        }
    }

    const Eigen::MatrixXd& gain_;
    std::vector<bool> rowSeen_;
    std::vector<bool> columnSeen_;
};

/// The column of each row in the complete assignment of least cost. Successive shortest augmenting
/// paths (Jonker, Volgenant: "A shortest augmenting path algorithm for dense and sparse linear
/// assignment problems", Computing 38, 1987).
///
/// @param cost at least as many columns as rows
std::vector<int> leastCost(const Eigen::MatrixXd& cost) {
    const auto rows = static_cast<int>(cost.rows());
    const auto columns = static_cast<int>(cost.cols());
    // Column `columns` is a virtual column that holds the row being assigned.
    std::vector<int> rowOf(static_cast<std::size_t>(columns) + 1, -1);
    std::vector<int> before(rowOf.size());
    Eigen::VectorXd rowPrice = Eigen::VectorXd::Zero(rows);
    Eigen::VectorXd columnPrice = Eigen::VectorXd::Zero(columns + 1);
    for (int row = 0; row < rows; ++row) {
        std::vector<double> distance(rowOf.size(), std::numeric_limits<double>::infinity());
        std::vector<bool> isReached(rowOf.size());
        int column = columns;
        rowOf[static_cast<std::size_t>(column)] = row;
        do {
            isReached[static_cast<std::size_t>(column)] = true;
            const int from = rowOf[static_cast<std::size_t>(column)];
            double least = std::numeric_limits<double>::infinity();
            int nearest = -1;
            for (int j = 0; j < columns; ++j) {
                const auto place = static_cast<std::size_t>(j);
                if (isReached[place]) {
                    continue;
                }
                const double reduced = cost(from, j) - rowPrice[from] - columnPrice[j];
                if (reduced < distance[place]) {
                    distance[place] = reduced;
                    before[place] = column;
                }
                if (distance[place] < least) {
                    least = distance[place];
                    nearest = j;
                }
            }
            for (int j = 0; j <= columns; ++j) {
                const auto place = static_cast<std::size_t>(j);
                if (isReached[place]) {
                    rowPrice[rowOf[place]] += least;
                    columnPrice[j] -= least;
                } else {
                    distance[place] -= least;
                }
            }
            column = nearest;
        } while (rowOf[static_cast<std::size_t>(column)] >= 0);
        while (column != columns) {
            const int previous = before[static_cast<std::size_t>(column)];
            rowOf[static_cast<std::size_t>(column)] = rowOf[static_cast<std::size_t>(previous)];
            column = previous;
        }
    }
    std::vector<int> columnOf(static_cast<std::size_t>(rows), -1);
    for (int j = 0; j < columns; ++j) {
        if (const int row = rowOf[static_cast<std::size_t>(j)]; row >= 0) {
            columnOf[static_cast<std::size_t>(row)] = j;
        }
    }
    return columnOf;
}

/// Solves one group. Pairs without gain get the cost of an unassigned row: the complete assignment
/// of the shorter side then has the greatest gain, and these pairs are dropped from it.
void solve(const Group& group, const Eigen::MatrixXd& gain, Pairs& pairs) {
    const Eigen::MatrixXd gains = gain(group.rows, group.columns).cwiseMax(0.0);
    const bool isUpright = gains.rows() <= gains.cols();
    const std::vector<int> partners =
        leastCost(isUpright ? Eigen::MatrixXd(-gains) : Eigen::MatrixXd(-gains.transpose()));
    for (std::size_t i = 0; i < partners.size(); ++i) {
        const auto partner = static_cast<std::size_t>(partners[i]);
        const int row = group.rows[isUpright ? i : partner];
        const int column = group.columns[isUpright ? partner : i];
        if (gain(row, column) > 0.0) {
            pairs.emplace_back(row, column);
        }
    }
}

}  // namespace

Pairs assignWithGreatestGain(const Eigen::MatrixXd& gain) {
    Pairs pairs;
    Grouping grouping(gain);
    for (int row = 0; row < gain.rows(); ++row) {
        const Group group = grouping.groupOf(row);
        if (group.columns.empty()) {
            continue;
        }
        solve(group, gain, pairs);
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

}  // namespace Workbench
