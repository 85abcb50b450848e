// SPDX-License-Identifier: Apache-2.0
#include "evaluate/RecordingsReport.h"

#include "io/CsvCells.h"
#include "io/Printable.h"
#include "recording/Header.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// A metric over several recordings.
struct Spread {
    int recordings = 0;  ///< that tell the metric
    double mean = std::numeric_limits<double>::quiet_NaN();
    double deviation = std::numeric_limits<double>::quiet_NaN();
};

/// @param tracker place of the tracker
/// @param row place of the metric
Spread spreadOf(const std::vector<EvaluationReport>& reports, std::size_t tracker,
                std::size_t row) {
    std::vector<double> values;
    for (const EvaluationReport& report : reports) {
        const Figure& figure = report.parts.front().trackers[tracker].figures[row];
        if (isTold(figure, report.header)) {
            values.push_back(figure.value);
        }
    }
    Spread spread;
    const auto count = static_cast<double>(values.size());
    spread.recordings = static_cast<int>(values.size());
    if (!values.empty()) {
        spread.mean = 0.0;
        for (const double value : values) {
            spread.mean += value / count;
        }
    }
    if (values.size() > 1) {
        double squares = 0.0;
        for (const double value : values) {
            squares += (value - spread.mean) * (value - spread.mean);
        }
        spread.deviation = std::sqrt(squares / (count - 1.0));
    }
    return spread;
}

std::string cellOf(const Spread& spread, int decimals) {
    std::string cell = "-";
    if (spread.recordings > 0) {
        // The mean of counts is no count.
        const int digits = std::max(decimals, 1);
        cell = fmt::format("{:.{}f}", spread.mean, digits);
        if (spread.recordings > 1) {
            cell += fmt::format(" ({:.{}f})", spread.deviation, digits);
        }
    }
    return fmt::format("{:>18}", cell);
}

std::string spreadTable(const std::vector<EvaluationReport>& reports) {
    const std::vector<TrackerFigures>& trackers = reports.front().parts.front().trackers;
    std::string text = fmt::format("\n{:<28}", "mean (standard deviation)");
    for (const TrackerFigures& tracker : trackers) {
        text += fmt::format("{:>18}", tracker.tracker);
    }
    text += '\n';
    for (std::size_t row = 0; row < trackers.front().figures.size(); ++row) {
        const Figure& figure = trackers.front().figures[row];
        text += fmt::format("{:<28}", figure.label);
        for (std::size_t tracker = 0; tracker < trackers.size(); ++tracker) {
            text += cellOf(spreadOf(reports, tracker, row), figure.decimals);
        }
        text += '\n';
    }
    return text;
}

Json jsonOf(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

}  // namespace

std::string toTable(const std::vector<EvaluationReport>& reports) {
    if (reports.size() == 1) {
        return toTable(reports.front());
    }
    std::string text;
    for (const EvaluationReport& report : reports) {
        text += toShortTable(report) + "\n";
    }
    return text + fmt::format("{} recordings\n", reports.size()) + spreadTable(reports);
}

std::string toJsonText(const std::vector<EvaluationReport>& reports) {
    if (reports.size() == 1) {
        return toJsonText(reports.front());
    }
    Json json{{"recordings", Json::array()}};
    for (const EvaluationReport& report : reports) {
        json["recordings"].push_back(toJson(report));
    }
    const std::vector<TrackerFigures>& trackers = reports.front().parts.front().trackers;
    for (std::size_t tracker = 0; tracker < trackers.size(); ++tracker) {
        Json& over = json["over"][trackers[tracker].tracker];
        for (std::size_t row = 0; row < trackers[tracker].figures.size(); ++row) {
            const Spread spread = spreadOf(reports, tracker, row);
            over[trackers[tracker].figures[row].key] = {{"mean", jsonOf(spread.mean)},
                                                        {"std", jsonOf(spread.deviation)},
                                                        {"recordings", spread.recordings}};
        }
    }
    return json.dump(2) + "\n";
}

std::string toCsv(const std::vector<EvaluationReport>& reports) {
    LineText text;
    text += "tracker,recording,part,metric,value\n";
    for (const EvaluationReport& report : reports) {
        for (const PartFigures& part : report.parts) {
            for (const TrackerFigures& tracker : part.trackers) {
                for (const Figure& figure : tracker.figures) {
                    text += tracker.tracker;  // needs no quotes
                    addCell(text, report.header.name);
                    addCell(text, part.part);
                    addCell(text, figure.key);
                    addCell(text, isTold(figure, report.header) ? fmt::format("{}", figure.value)
                                                                : std::string());
                    text += '\n';
                }
            }
        }
    }
    return text.string();
}

}  // namespace Workbench
