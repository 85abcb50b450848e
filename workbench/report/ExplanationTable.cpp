// SPDX-License-Identifier: Apache-2.0
#include "report/ExplanationTable.h"

#include "io/Fields.h"
#include "io/InputError.h"
#include "io/LineReader.h"
#include "io/TextFile.h"
#include "report/Resolution.h"
#include "report/TrackTable.h"

#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();

/// What was compared, and what happened: the page knows them by these numbers.
enum PairKind : std::int32_t { Continuation, Candidate, MergeCandidate };
enum EventKind : std::int32_t { Start, Confirmation, Pruning, Deletion };

std::int32_t sensorOf(const Fields& record) {
    return record.text("sensor") == "radar" ? 1 : 0;
}

class Explanations {
public:
    explicit Explanations(Words& vocabulary)
        : words(vocabulary),
          pairs({"kind", "track", "source", "other"}, {{"distance", percent},
                                                       {"limit", percent},
                                                       {"similarity", percent},
                                                       {"similarityLimit", percent},
                                                       {"gate", 1.0},
                                                       {"class", 1.0},
                                                       {"outcome", 1.0}}),
          events({"kind", "track", "source", "other"}, {{"value", percent}, {"reason", 1.0}}) {}

    void add(const Fields& frame) {
        times.push_back(frame.number("time"));
        sources.append(frame.text("source") == "radar" ? 1 : 0);
        pairs.beginFrame();
        events.beginFrame();
        forEach(frame, "continuations", [&](const Fields& f) { pair(Continuation, f); });
        forEach(frame, "candidates", [&](const Fields& f) { pair(Candidate, f); });
        forEach(frame, "mergeCandidates", [&](const Fields& f) { pair(MergeCandidate, f); });
        forEach(frame, "starts", [&](const Fields& f) {
            events.add({Start, f.integer("track"), sensorOf(f), f.integer("id")},
                       {nothing, nothing});
        });
        forEach(frame, "confirmations", [&](const Fields& f) {
            events.add({Confirmation, f.integer("track"), 0, 0},
                       {f.number("probability", nothing), nothing});
        });
        forEach(frame, "prunings", [&](const Fields& f) {
            events.add({Pruning, f.integer("track"), sensorOf(f), f.integer("id")},
                       {f.number("coasting", nothing), nothing});
        });
        forEach(frame, "deletions", [&](const Fields& f) {
            events.add({Deletion, f.integer("track"), 0, 0},
                       {nothing, words.numberOf(f.text("reason"))});
        });
    }

    Json json(double start) const {
        return {{"time", timeColumn(times, start)},
                {"source", sources.json()},
                {"pairs", pairs.json()},
                {"events", events.json()}};
    }

private:
    template <typename Function>
    static void forEach(const Fields& frame, const char* name, Function function) {
        if (!frame.has(name)) {
            return;
        }
        const nlohmann::json& list = frame.array(name);
        for (std::size_t i = 0; i < list.size(); ++i) {
            function(Fields(list[i], fmt::format("{}[{}]", name, i)));
        }
    }

    void pair(PairKind kind, const Fields& record) {
        const bool isMerge = kind == MergeCandidate;
        pairs.add(
            {kind, record.integer("track"), isMerge ? 0 : sensorOf(record),
             record.integer(isMerge ? "other" : "id")},
            {record.number("distance", nothing), record.number("limit", nothing),
             record.number("velocitySimilarity", nothing),
             record.number("similarityLimit", nothing), words.numberOf(record.text("gate", "")),
             words.numberOf(record.text("class", "")), words.numberOf(record.text("outcome", ""))});
    }

    Words& words;
    std::vector<double> times;
    Column sources{1.0};
    TrackTable pairs;
    TrackTable events;
};

}  // namespace

Json explanationTable(const std::string& path, Words& words, double start) {
    LineReader lines(path);
    Explanations explanations(words);
    std::string_view text;
    while (lines.next(text)) {
        try {
            const nlohmann::json json = nlohmann::json::parse(text);
            explanations.add(Fields(json, ""));
        } catch (const nlohmann::json::exception& error) {
            throw InputError(fmt::format("{}: {}", lines.place(), reasonOf(error)));
        } catch (const InputError& error) {
            throw InputError(fmt::format("{}: {}", lines.place(), error.what()));
        }
    }
    return explanations.json(start);
}

}  // namespace Workbench
