// SPDX-License-Identifier: Apache-2.0
#include "evaluate/RecordingsReport.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using testing::HasSubstr;

constexpr double untold = std::numeric_limits<double>::quiet_NaN();

/// A recording with GOSPA, which needs all objects, and the delay of two trackers.
EvaluationReport reportOf(const std::string& name, TruthKind truth, double gospa, double delay) {
    EvaluationReport report;
    report.header.name = name;
    report.header.truth = truth;
    report.instants = 3;
    const auto figures = [&](double shift) {
        return std::vector<Figure>{{"GOSPA", "GOSPA [m]", 3, true, true, gospa + shift},
                                   {"delay", "delay [s]", 2, false, true, delay + shift}};
    };
    report.parts = {{"all", {{"fusion", figures(0.0)}, {"radar 3", figures(1.0)}}}};
    return report;
}

TEST(RecordingsReport, OfOneRecordingIsItsOwn) {
    const EvaluationReport one = reportOf("yard", TruthKind::Complete, 1.0, 0.5);
    EXPECT_EQ(toTable(std::vector{one}), toTable(one));
    EXPECT_EQ(toJsonText(std::vector{one}), toJsonText(one));
}

TEST(RecordingsReport, TellsMeanAndDeviationOfTheSample) {
    const std::vector<EvaluationReport> reports{
        reportOf("a", TruthKind::Complete, 1.0, 0.5),
        reportOf("b", TruthKind::Complete, 2.0, untold),
        reportOf("c", TruthKind::Complete, 6.0, 1.5),
    };
    const auto over = nlohmann::json::parse(toJsonText(reports))["over"];
    EXPECT_EQ(over["fusion"]["GOSPA"]["mean"], 3.0);
    // Squares of 2, 1 and 3 over two degrees of freedom.
    EXPECT_DOUBLE_EQ(over["fusion"]["GOSPA"]["std"].get<double>(), std::sqrt(7.0));
    EXPECT_EQ(over["fusion"]["GOSPA"]["recordings"], 3);
    EXPECT_EQ(over["radar 3"]["GOSPA"]["mean"], 4.0);
    // Only the recordings that tell it.
    EXPECT_EQ(over["fusion"]["delay"]["mean"], 1.0);
    EXPECT_EQ(over["fusion"]["delay"]["recordings"], 2);
    const std::string table = toTable(reports);
    EXPECT_THAT(table, HasSubstr("3 recordings"));
    EXPECT_THAT(table, HasSubstr("     3.000 (2.646)     4.000 (2.646)\n"));
    EXPECT_THAT(table, HasSubstr("       1.00 (0.71)       2.00 (0.71)\n"));
}

TEST(RecordingsReport, LeavesOutWhatIncompleteTruthCannotTell) {
    const std::vector<EvaluationReport> reports{
        reportOf("a", TruthKind::Complete, 1.0, 0.5),
        reportOf("b", TruthKind::Incomplete, 9.0, 0.7),
    };
    const auto over = nlohmann::json::parse(toJsonText(reports))["over"];
    EXPECT_EQ(over["fusion"]["GOSPA"]["mean"], 1.0);
    EXPECT_TRUE(over["fusion"]["GOSPA"]["std"].is_null());
    EXPECT_EQ(over["fusion"]["delay"]["recordings"], 2);
}

TEST(RecordingsReport, HasARowForEachFigure) {
    const std::string csv = toCsv({reportOf("a,b", TruthKind::Complete, 1.5, untold)});
    EXPECT_EQ(csv,
              "tracker,recording,part,metric,value\n"
              "fusion,\"a,b\",all,GOSPA,1.5\n"
              "fusion,\"a,b\",all,delay,\n"
              "radar 3,\"a,b\",all,GOSPA,2.5\n"
              "radar 3,\"a,b\",all,delay,\n");
}

}  // namespace
}  // namespace Workbench
