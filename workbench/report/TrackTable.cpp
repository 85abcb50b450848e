// SPDX-License-Identifier: Apache-2.0
#include "report/TrackTable.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace Workbench {

TrackTable::TrackTable(std::vector<const char*> keys, std::vector<ColumnKind> columns)
    : keyNames(std::move(keys)), kinds(std::move(columns)) {}

void TrackTable::add(const Key& key, const std::vector<double>& values) {
    Track& track = tracks[key];
    track.rows.push_back(frames - 1 - track.nextFrame);
    track.nextFrame = frames;
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        track.rows.push_back(inSteps(values.at(i), kinds[i].step));
    }
}

Json TrackTable::column(std::size_t place, double step) const {
    Column column(step);
    for (const auto& [key, track] : tracks) {
        for (std::size_t i = place; i < track.rows.size(); i += kinds.size() + 1) {
            column.append(track.rows[i]);
        }
    }
    return column.json();
}

Json TrackTable::json() const {
    Json table{{"frames", frames}, {"tracks", tracks.size()}};
    for (std::size_t k = 0; k < keyNames.size(); ++k) {
        Column column(1.0);
        for (const auto& [key, track] : tracks) {
            column.append(key.at(k));
        }
        table["keys"][keyNames[k]] = column.json();
    }
    Column counts(1.0);
    std::size_t all = 0;
    for (const auto& [key, track] : tracks) {
        const std::size_t count = track.rows.size() / (kinds.size() + 1);
        counts.append(static_cast<std::int32_t>(count));
        all += count;
    }
    table["rows"] = all;
    table["counts"] = counts.json();
    table["skipped"] = column(0, 1.0);
    table["columns"] = Json::object();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        table["columns"][kinds[i].name] = column(i + 1, kinds[i].step);
    }
    return table;
}

}  // namespace Workbench
