// SPDX-License-Identifier: Apache-2.0
#include "evaluate/EvaluationReport.h"

#include "io/Printable.h"
#include "recording/Header.h"

#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

std::string cellOf(const Figure& figure, const RecordingHeader& header) {
    return isTold(figure, header) ? fmt::format("{:>10.{}f}", figure.value, figure.decimals)
                                  : fmt::format("{:>10}", "-");
}

void appendTable(std::string& text, const PartFigures& part, const RecordingHeader& header,
                 bool essentialOnly) {
    text += fmt::format("\n{:<28}", printable(part.part));
    for (const TrackerFigures& tracker : part.trackers) {
        text += fmt::format("{:>10}", tracker.tracker);
    }
    text += '\n';
    for (std::size_t row = 0; row < part.trackers.front().figures.size(); ++row) {
        const Figure& first = part.trackers.front().figures[row];
        if (essentialOnly && !first.isEssential) {
            continue;
        }
        text += fmt::format("{:<28}", first.label);
        for (const TrackerFigures& tracker : part.trackers) {
            text += cellOf(tracker.figures[row], header);
        }
        text += '\n';
    }
}

std::string headingOf(const EvaluationReport& report) {
    std::string text = fmt::format(
        "{}, {} moments of truth{}, cutoff {} m, tracks shown for {} s of coasting.\n"
        "Single sensors with the number of times that a track must be seen to count.\n",
        printable(report.header.name), report.instants,
        report.options.commonFieldOfView ? ", where both sensors can see" : "",
        report.options.cutoff, report.options.coastingLimit);
    if (report.header.truth == TruthKind::Incomplete) {
        text += "The truth leaves objects out: figures that count false tracks are omitted.\n";
    }
    return text;
}

}  // namespace

bool isAllowed(const Figure& figure, const RecordingHeader& header) {
    return header.truth == TruthKind::Complete || !figure.needsAllObjects;
}

bool isTold(const Figure& figure, const RecordingHeader& header) {
    return isAllowed(figure, header) && std::isfinite(figure.value);
}

std::string toTable(const EvaluationReport& report) {
    std::string text = headingOf(report);
    bool isPart = false;
    for (const PartFigures& part : report.parts) {
        appendTable(text, part, report.header, isPart);
        isPart = true;
    }
    return text;
}

std::string toShortTable(const EvaluationReport& report) {
    std::string text = headingOf(report);
    appendTable(text, report.parts.front(), report.header, true);
    return text;
}

std::string toJsonText(const EvaluationReport& report) {
    return toJson(report).dump(2) + "\n";
}

Json toJson(const EvaluationReport& report) {
    Json json{{"recording", report.header.name},
              {"truth", report.header.truth == TruthKind::Complete ? "complete" : "incomplete"},
              {"instants", report.instants},
              {"cutoff", report.options.cutoff},
              {"coastingLimit", report.options.coastingLimit},
              {"commonFieldOfView", report.options.commonFieldOfView}};
    if (report.header.seed) {
        json["seed"] = *report.header.seed;
    }
    for (const PartFigures& part : report.parts) {
        Json& ofPart = json["parts"][part.part];
        for (const TrackerFigures& tracker : part.trackers) {
            Json& ofTracker = ofPart[tracker.tracker];
            for (const Figure& figure : tracker.figures) {
                ofTracker[figure.key] =
                    isTold(figure, report.header) ? Json(figure.value) : Json(nullptr);
            }
        }
    }
    return json;
}

}  // namespace Workbench
