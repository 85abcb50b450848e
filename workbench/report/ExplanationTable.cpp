// SPDX-License-Identifier: Apache-2.0
#include "report/ExplanationTable.h"

#include <veskar-host/SensorFrame.h>

#include "io/LineParser.h"
#include "io/LineReader.h"
#include "replay/ExplanationWords.h"
#include "report/Column.h"
#include "report/Resolution.h"
#include "report/RunTable.h"

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// The page knows kinds by these numbers.
template <typename Kind>
std::int32_t pageNumberOf(Kind kind) {
    return static_cast<std::int32_t>(kind);
}

/// @return the number of the sensor that a member names
std::int32_t sensorOf(const LineFields& record, std::string_view member) {
    const bool isRadar = record.text(member) == sourceName(Veskar::Radar);
    return sourceNumber(isRadar ? Veskar::Radar : Veskar::VideoObject);
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
        sources_.append(sensorOf(frame, "source"));
        pairs_.beginFrame();
        events_.beginFrame();
        for (const PairKind kind :
             {PairKind::Continuation, PairKind::Candidate, PairKind::MergeCandidate}) {
            forEach(frame, wordOf(kind), [&](const LineFields& f) { pair(kind, f); });
        }
        forEach(frame, wordOf(EventKind::Start), [&](const LineFields& f) {
            events_.add({pageNumberOf(EventKind::Start), f.integer("track"), sensorOf(f, "sensor"),
                         f.integer("id")},
                        {noValue, noValue});
        });
        forEach(frame, wordOf(EventKind::StartWithheld), [&](const LineFields& f) {
            events_.add(
                {pageNumberOf(EventKind::StartWithheld), 0, sensorOf(f, "sensor"), f.integer("id")},
                {f.number("coasting", noValue), noValue});
        });
        forEach(frame, wordOf(EventKind::Confirmation), [&](const LineFields& f) {
            events_.add({pageNumberOf(EventKind::Confirmation), f.integer("track"), 0, 0},
                        {f.number("probability", noValue), noValue});
        });
        forEach(frame, wordOf(EventKind::ConfirmationWithheld), [&](const LineFields& f) {
            events_.add({pageNumberOf(EventKind::ConfirmationWithheld), f.integer("track"), 0, 0},
                        {f.number("rangeStd", noValue), noValue});
        });
        forEach(frame, wordOf(EventKind::Pruning), [&](const LineFields& f) {
            events_.add({pageNumberOf(EventKind::Pruning), f.integer("track"),
                         sensorOf(f, "sensor"), f.integer("id")},
                        {f.number("coasting", noValue), words_.numberOf(f.text("reason", ""))});
        });
        forEach(frame, wordOf(EventKind::Deletion), [&](const LineFields& f) {
            events_.add({pageNumberOf(EventKind::Deletion), f.integer("track"), 0, 0},
                        {noValue, words_.numberOf(f.text("reason"))});
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
        const bool isMerge = kind == PairKind::MergeCandidate;
        pairs_.add(
            {pageNumberOf(kind), record.integer("track"), isMerge ? 0 : sensorOf(record, "sensor"),
             record.integer(isMerge ? "other" : "id")},
            {record.number("distance", noValue), record.number("limit", noValue),
             record.number("velocitySimilarity", noValue),
             record.number("similarityLimit", noValue), words_.numberOf(record.text("gate", "")),
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
