// SPDX-License-Identifier: Apache-2.0
#include "report/TrackTable.h"

#include <utility>

#include <nlohmann/json.hpp>

namespace Workbench {

TrackTable::TrackTable(std::vector<const char*> keys, std::vector<ColumnKind> columns)
    : keyNames_(std::move(keys)), kinds_(std::move(columns)) {}

void TrackTable::add(const Key& key, const std::vector<double>& values) {
    Track& track = tracks_[key];
    track.rows.push_back(frames_ - 1 - track.nextFrame);
    track.nextFrame = frames_;
    for (std::size_t i = 0; i < kinds_.size(); ++i) {
        track.rows.push_back(inSteps(values.at(i), kinds_[i].step));
    }
}

Json TrackTable::column(std::size_t place, double step) const {
    Column column(step);
    for (const auto& [key, track] : tracks_) {
        for (std::size_t i = place; i < track.rows.size(); i += kinds_.size() + 1) {
            column.append(track.rows[i]);
        }
    }
    return column.json();
}

Json TrackTable::json() const {
    Json table{{"frames", frames_}, {"tracks", tracks_.size()}};
    for (std::size_t k = 0; k < keyNames_.size(); ++k) {
        Column column(1.0);
        for (const auto& [key, track] : tracks_) {
            column.append(key.at(k));
        }
        table["keys"][keyNames_[k]] = column.json();
    }
    Column counts(1.0);
    std::size_t all = 0;
    for (const auto& [key, track] : tracks_) {
        const std::size_t count = track.rows.size() / (kinds_.size() + 1);
        counts.append(static_cast<std::int32_t>(count));
        all += count;
    }
    table["rows"] = all;
    table["counts"] = counts.json();
    table["skipped"] = column(0, 1.0);
    table["columns"] = Json::object();
    for (std::size_t i = 0; i < kinds_.size(); ++i) {
        table["columns"][kinds_[i].name] = column(i + 1, kinds_[i].step);
    }
    return table;
}

}  // namespace Workbench
