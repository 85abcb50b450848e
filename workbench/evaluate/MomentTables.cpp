// SPDX-License-Identifier: Apache-2.0
#include "evaluate/MomentTables.h"

#include "io/CsvCells.h"
#include "io/UtcText.h"
#include "recording/Header.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// Rows with the same names, from which either form is made.
class MomentRows {
public:
    explicit MomentRows(std::vector<const char*> names) : names_(std::move(names)) {}

    /// @param cells in the order of the names
    void add(std::vector<Json> cells) { rows_.push_back(std::move(cells)); }

    std::string text(TableForm form) const { return form == TableForm::Csv ? csv() : json(); }

private:
    std::string csv() const {
        LineText text;
        for (std::size_t i = 0; i < names_.size(); ++i) {
            text += i == 0 ? "" : ",";
            text += names_[i];
        }
        text += '\n';
        for (const std::vector<Json>& row : rows_) {
            text += row.front().get<std::string>();  // the name of a tracker needs no quotes
            for (std::size_t i = 1; i < row.size(); ++i) {
                const Json& cell = row[i];
                addCell(text, cell.is_null()     ? std::string()
                              : cell.is_string() ? cell.get<std::string>()
                                                 : cell.dump());
            }
            text += '\n';
        }
        return text.string();
    }
    std::string json() const {
        Json list = Json::array();
        for (const std::vector<Json>& row : rows_) {
            Json object;
            for (std::size_t i = 0; i < names_.size(); ++i) {
                object[names_[i]] = row[i];
            }
            list.push_back(std::move(object));
        }
        return list.dump(1) + "\n";
    }

    std::vector<const char*> names_;
    std::vector<std::vector<Json>> rows_;
};

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// What became of one object.
struct ObjectFate {
    int moments = 0;
    int matched = 0;
    int changes = 0;
    std::set<int> tracks;
    std::optional<int> last;  ///< the track of the last match
    Json firstTime;
    Json lastTime;
};

}  // namespace

TableForm formOf(const std::string& path) {
    std::string name = path;
    for (const char* packed : {".gz", ".zst"}) {
        if (endsWith(name, packed)) {
            name.resize(name.size() - std::string(packed).size());
        }
    }
    return endsWith(name, ".json") ? TableForm::JsonArray : TableForm::Csv;
}

std::string momentTable(const RecordingHeader& header, const std::vector<GospaSeries>& overTime,
                        TableForm form) {
    MomentRows rows(
        {"tracker", "time", "utc", "GOSPA", "localisationCost", "matched", "missed", "false"});
    const bool isComplete = header.truth == TruthKind::Complete;
    for (const GospaSeries& series : overTime) {
        for (const GospaMoment& moment : series.moments) {
            const Gospa& gospa = moment.gospa;
            rows.add({series.tracker, moment.time,
                      header.epoch ? Json(utcText(*header.epoch + moment.time)) : Json(),
                      isComplete ? Json(gospa.distance) : Json(), gospa.localisationCost,
                      gospa.matched, gospa.missed, isComplete ? Json(gospa.falseTracks) : Json()});
        }
    }
    return rows.text(form);
}

std::string objectTable(const std::vector<GospaSeries>& overTime, TableForm form) {
    MomentRows rows(
        {"tracker", "object", "moments", "matched", "tracks", "changes", "first", "last"});
    for (const GospaSeries& series : overTime) {
        std::map<int, ObjectFate> fates;
        for (const GospaMoment& moment : series.moments) {
            for (const int object : moment.objects) {
                ++fates[object].moments;
            }
            for (const auto& [object, track] : moment.matches) {
                ObjectFate& fate = fates[object];
                ++fate.matched;
                fate.changes += fate.last && *fate.last != track ? 1 : 0;
                fate.tracks.insert(track);
                fate.last = track;
                fate.firstTime = fate.firstTime.is_null() ? Json(moment.time) : fate.firstTime;
                fate.lastTime = moment.time;
            }
        }
        for (const auto& [object, fate] : fates) {
            rows.add({series.tracker, object, fate.moments, fate.matched, fate.tracks.size(),
                      fate.changes, fate.firstTime, fate.lastTime});
        }
    }
    return rows.text(form);
}

}  // namespace Workbench
