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

/// The name and resolution of a column.
struct ColumnKind {
    const char* name;  ///< name in the page's data
    double step;       ///< resolution, in the unit of the numbers
};

/// Rows of numbers that arrive frame by frame and are stored track by track, because a track
/// changes little between frames.
///
/// The page gets {"frames": n, "tracks": m, "rows": k, "keys": {name: column of m}, "counts":
/// column of m (rows of each track), "skipped": column of k, "columns": {name: column of k, ...}}.
/// "skipped" is the number of frames without the track before each of its rows, usually 0 for all
/// but the first.
class TrackTable {
public:
    /// Identifies a track; as many numbers as the table has names of keys.
    using Key = std::vector<std::int32_t>;

    /// @param keys names of the numbers of a key
    /// @param columns the columns
    TrackTable(std::vector<const char*> keys, std::vector<ColumnKind> columns);

    /// The rows that follow belong to a new frame.
    void beginFrame() { ++frames_; }
    /// @param key key of the track
    /// @param values one for each column; missing if not finite
    void add(const Key& key, const std::vector<double>& values);
    /// @return number of frames so far
    std::int32_t frameCount() const { return frames_; }
    /// @return the encoded table
    Json json() const;

private:
    Json column(std::size_t place, double step) const;

    std::vector<const char*> keyNames_;
    std::vector<ColumnKind> kinds_;
    struct Track {
        std::int32_t nextFrame = 0;      ///< frame after its last row
        std::vector<std::int32_t> rows;  ///< each row: frames skipped, then the values in steps
    };

    std::map<Key, Track> tracks_;
    std::int32_t frames_ = 0;
};

}  // namespace Workbench
