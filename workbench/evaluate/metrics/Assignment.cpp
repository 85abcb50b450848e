// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Assignment.h"

#include <veskar/Config.h>
#include <veskar/TrackAssociator.h>

#include <algorithm>

namespace Workbench {
namespace {

/// Rows and columns that are connected through positive gains.
struct Group {
    std::vector<int> rows;
    std::vector<int> columns;
};

class Grouping {
public:
    explicit Grouping(const Eigen::MatrixXd& gains)
        : gain(gains),
          rowSeen(static_cast<std::size_t>(gains.rows())),
          columnSeen(static_cast<std::size_t>(gains.cols())) {}

    /// @return the group of a row; empty when the row is in an earlier group or has no partner
    Group groupOf(int row) {
        Group group;
        addRow(row, group);
        for (std::size_t next = 0; next < group.rows.size(); ++next) {
            for (int column = 0; column < gain.cols(); ++column) {
                if (gain(group.rows[next], column) > 0.0) {
                    addColumn(column, group);
                }
            }
        }
        return group;
    }

private:
    void addRow(int row, Group& group) {
        if (!rowSeen[static_cast<std::size_t>(row)]) {
            rowSeen[static_cast<std::size_t>(row)] = true;
            group.rows.push_back(row);
        }
    }

    void addColumn(int column, Group& group) {
        if (columnSeen[static_cast<std::size_t>(column)]) {
            return;
        }
        columnSeen[static_cast<std::size_t>(column)] = true;
        group.columns.push_back(column);
        for (int row = 0; row < gain.rows(); ++row) {
            if (gain(row, column) > 0.0) {
                addRow(row, group);
            }
        }
    }

    const Eigen::MatrixXd& gain;
    std::vector<bool> rowSeen;
    std::vector<bool> columnSeen;
};

/// Solves one group. The solver looks for the least cost, so that a pair without gain must cost as
/// much as the best gain is worth, and is then left out as not allowed.
void solve(const Group& group, const Eigen::MatrixXd& gain, Veskar::TrackAssociator& solver) {
    const double best = gain.maxCoeff();
    std::vector<std::vector<double>> cost;
    std::vector<std::vector<bool>> allowed;
    for (const int row : group.rows) {
        auto& costs = cost.emplace_back();
        auto& verdicts = allowed.emplace_back();
        for (const int column : group.columns) {
            costs.push_back(best - std::max(0.0, gain(row, column)));
            verdicts.push_back(gain(row, column) > 0.0);
        }
    }
    solver.runJVA(static_cast<int>(group.rows.size()), static_cast<int>(group.columns.size()), cost,
                  allowed);
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
        Veskar::TrackAssociator solver{Veskar::Config{}};
        solve(group, gain, solver);
        for (const auto& [i, j] : solver.getAssociations()) {
            pairs.emplace_back(group.rows[static_cast<std::size_t>(i)],
                               group.columns[static_cast<std::size_t>(j)]);
        }
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

}  // namespace Workbench
