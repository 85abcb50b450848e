// SPDX-License-Identifier: Apache-2.0
#include "report/ExplanationTable.h"

#include "io/LineParser.h"
#include "io/LineReader.h"
#include "report/Resolution.h"
#include "report/TrackTable.h"

#include <limits>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr double nothing = std::numeric_limits<double>::quiet_NaN();

/// What was compared, and what happened: the page knows them by these numbers.
enum PairKind : std::int32_t { Continuation, Candidate, MergeCandidate };
enum EventKind : std::int32_t { Start, Confirmation, Pruning, Deletion };

std::int32_t sensorOf(const LineFields& record) {
    return record.text("sensor") == "radar" ? 1 : 0;
}

class Explanations {
public:
    explicit Explanations(Words& vocabulary)
        : words_(vocabulary),
          pairs_({"kind", "track", "source", "other"}, {{"distance", percent},
                                                        {"limit", percent},
                                                        {"similarity", percent},
                                                        {"similarityLimit", percent},
                                                        {"gate", 1.0},
                                                        {"class", 1.0},
                                                        {"outcome", 1.0}}),
          events_({"kind", "track", "source", "other"}, {{"value", percent}, {"reason", 1.0}}) {}

    void add(const LineFields& frame) {
        times_.push_back(frame.number("time"));
        sources_.append(frame.text("source") == "radar" ? 1 : 0);
        pairs_.beginFrame();
        events_.beginFrame();
        forEach(frame, "continuations", [&](const LineFields& f) { pair(Continuation, f); });
        forEach(frame, "candidates", [&](const LineFields& f) { pair(Candidate, f); });
        forEach(frame, "mergeCandidates", [&](const LineFields& f) { pair(MergeCandidate, f); });
        forEach(frame, "starts", [&](const LineFields& f) {
            events_.add({Start, f.integer("track"), sensorOf(f), f.integer("id")},
                        {nothing, nothing});
        });
        forEach(frame, "confirmations", [&](const LineFields& f) {
            events_.add({Confirmation, f.integer("track"), 0, 0},
                        {f.number("probability", nothing), nothing});
        });
        forEach(frame, "prunings", [&](const LineFields& f) {
            events_.add({Pruning, f.integer("track"), sensorOf(f), f.integer("id")},
                        {f.number("coasting", nothing), nothing});
        });
        forEach(frame, "deletions", [&](const LineFields& f) {
            events_.add({Deletion, f.integer("track"), 0, 0},
                        {nothing, words_.numberOf(f.text("reason"))});
        });
    }

    Json json(double start) const {
        return {{"time", timeColumn(times_, start)},
                {"source", sources_.json()},
                {"pairs", pairs_.json()},
                {"events", events_.json()}};
    }

private:
    template <typename Function>
    static void forEach(const LineFields& frame, std::string_view name, Function function) {
        if (frame.has(name)) {
            frame.forEach(name, function);
        }
    }

    void pair(PairKind kind, const LineFields& record) {
        const bool isMerge = kind == MergeCandidate;
        pairs_.add(
            {kind, record.integer("track"), isMerge ? 0 : sensorOf(record),
             record.integer(isMerge ? "other" : "id")},
            {record.number("distance", nothing), record.number("limit", nothing),
             record.number("velocitySimilarity", nothing),
             record.number("similarityLimit", nothing), words_.numberOf(record.text("gate", "")),
             words_.numberOf(record.text("class", "")),
             words_.numberOf(record.text("outcome", ""))});
    }

    Words& words_;
    std::vector<double> times_;
    Column sources_{1.0};
    TrackTable pairs_;
    TrackTable events_;
};

}  // namespace

ExplanationFile readExplanations(const std::string& path, Words& words, double start) {
    LineReader lines(path);
    LineParser parser;
    Explanations explanations(words);
    std::optional<RunDigests> digests;
    std::string_view text;
    while (lines.next(text)) {
        parser.read(lines, text, [&](const LineFields& line) {
            if (!readClosingLine(line, digests)) {
                explanations.add(line);
            }
        });
    }
    return {explanations.json(start), digests};
}

}  // namespace Workbench
