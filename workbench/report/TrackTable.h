// SPDX-License-Identifier: Apache-2.0
// Tracks over time as columns.
#pragma once

#include "recording/Header.h"
#include "report/Column.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Workbench {

/// What a column of a table holds.
struct ColumnKind {
    const char* name;  ///< for the page
    double step;       ///< resolution, in the unit of the numbers
};

/// Rows of numbers that arrive frame by frame and are kept track by track, because a track differs
/// little from itself a moment before.
///
/// The page gets {"frames": n, "tracks": m, "rows": k, "keys": {name: column of m}, "counts":
/// column of m (rows of each track), "skipped": column of k, "columns": {name: column of k, ...}}.
/// "skipped" is the number of frames without the track before each of its rows: all zeros, as a
/// rule, but for the first row.
class TrackTable {
public:
    /// What tells tracks apart; as many numbers as the table has names for them.
    using Key = std::vector<std::int32_t>;

    /// @param keys names of the numbers of a key
    /// @param columns the columns
    TrackTable(std::vector<const char*> keys, std::vector<ColumnKind> columns);

    /// The rows that follow belong to a new frame.
    void beginFrame() { ++frames_; }
    /// @param key which track
    /// @param values one for each column; not finite: missing
    void add(const Key& key, const std::vector<double>& values);
    /// @return frames so far
    std::int32_t frameCount() const { return frames_; }
    /// @return the table as the page gets it
    Json json() const;

private:
    Json column(std::size_t place, double step) const;

    std::vector<const char*> keyNames_;
    std::vector<ColumnKind> kinds_;
    struct Track {
        std::int32_t nextFrame = 0;      ///< after its last row
        std::vector<std::int32_t> rows;  ///< each: frames skipped, then the values in steps
    };

    std::map<Key, Track> tracks_;
    std::int32_t frames_ = 0;
};

}  // namespace Workbench
