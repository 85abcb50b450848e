// SPDX-License-Identifier: Apache-2.0
// veskar report as its users run it.
#include "Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class ReportProgram : public testing::Test {
protected:
    void SetUp() override {
        recording = directory / "tiny.jsonl";
        fused = directory / "fused.jsonl";
        ASSERT_EQ(veskar({"simulate", dataFile("tiny.scenario.json"), "-o", recording}).status, 0);
        ASSERT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    }

    /// @return the data in a page
    static nlohmann::json dataIn(const std::string& page) {
        const std::string start = "<script type=\"application/json\" id=\"report-data\">";
        const std::size_t begin = page.find(start) + start.size();
        return nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
    }

    VeskarTest::TemporaryDirectory directory;
    std::string recording;
    std::string fused;
};

TEST_F(ReportProgram, WritesOneFileThatNeedsNoOther) {
    const std::string path = directory / "report.html";
    const Outcome outcome = veskar({"report", recording, fused, "-o", path});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    const std::string page = slurp(path);
    EXPECT_THAT(page, StartsWith("<!doctype html>"));
    EXPECT_THAT(page, HasSubstr("default-src 'none'; script-src 'sha256-"));
    EXPECT_THAT(page, Not(HasSubstr(" src=")));
    EXPECT_THAT(page, Not(HasSubstr("unsafe-inline")));
    EXPECT_EQ(dataIn(page)["recording"]["name"], "tiny");
    EXPECT_EQ(veskar({"report", recording, fused, "-o", "-"}).output, page);
}

TEST_F(ReportProgram, HelpShowsAnExample) {
    const Outcome outcome = veskar({"report", "--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("Example:\n  veskar "));
}

TEST_F(ReportProgram, MarkupInNamesStaysText) {
    std::string text = slurp(recording);
    std::string other = slurp(fused);
    const std::string name = "\"name\":\"tiny\"";
    const std::string evil = R"("name":"</script><script>alert(1)</script>")";
    text.replace(text.find(name), name.size(), evil);
    other.replace(other.find(name), name.size(), evil);
    spill(recording, text);
    spill(fused, other);
    const Outcome outcome = veskar({"report", recording, fused, "-o", "-"});
    ASSERT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, Not(HasSubstr("<script>alert")));
    EXPECT_EQ(dataIn(outcome.output)["recording"]["name"], "</script><script>alert(1)</script>");
}

TEST_F(ReportProgram, ShowsTheConfigurationThatWasUsed) {
    std::string text = slurp(fused);
    const std::string used = "\"stationaryBlockingMinVideoAge\":3.0";
    ASSERT_NE(text.find(used), std::string::npos);
    // As written by hand: the fusion takes its default for an integer.
    text.replace(text.find(used), used.size(), "\"stationaryBlockingMinVideoAge\":5");
    spill(fused, text);
    const Outcome outcome = veskar({"report", recording, fused, "-o", "-"});
    ASSERT_EQ(outcome.status, 0);
    const auto configuration = dataIn(outcome.output)["runs"][0]["configuration"];
    EXPECT_EQ(configuration["veskarModule"]["stationaryBlockingMinVideoAge"], 3.0);
    EXPECT_EQ(configuration,
              nlohmann::json::parse(slurp(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json")));
}

TEST_F(ReportProgram, MissingFilesAreStatus2) {
    const std::string no = directory / "no";
    const std::string path = directory / "report.html";
    EXPECT_EQ(veskar({"report", no, fused, "-o", path}).errors,
              "veskar: " + no + ": No such file or directory\n");
    EXPECT_EQ(veskar({"report", recording, no, "-o", path}).status, 2);
    EXPECT_EQ(veskar({"report", recording, fused, no, "-o", path}).status, 2);
    EXPECT_EQ(veskar({"report", recording, fused, "--explain", no, "-o", path}).status, 2);
    EXPECT_THAT(directory.names(), ElementsAre("fused.jsonl", "tiny.jsonl"));
}

TEST_F(ReportProgram, WrongUsageIsStatus2) {
    EXPECT_EQ(veskar({"report", recording, "-o", "-"}).status, 2) << "no tracks";
    EXPECT_EQ(veskar({"report", recording, fused}).status, 2) << "no output";
    const Outcome outcome =
        veskar({"report", recording, fused, "--explain2", fused, "-o", directory / "report"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: --explain2 needs a second run to explain\n");
}

TEST_F(ReportProgram, AnEarlierReportSurvivesAFault) {
    const std::string text = slurp(fused);
    spill(directory / "cut", text.substr(0, text.size() - 30));
    spill(directory / "report.html", "precious");
    const Outcome outcome =
        veskar({"report", recording, directory / "cut", "-o", directory / "report.html"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, StartsWith("veskar: " + directory / "cut" + ":"));
    EXPECT_THAT(outcome.errors, HasSubstr(": the line is cut off: column "));
    EXPECT_EQ(slurp(directory / "report.html"), "precious");
    EXPECT_THAT(directory.names(), ElementsAre("cut", "fused.jsonl", "report.html", "tiny.jsonl"));
}

TEST_F(ReportProgram, AFullDiskIsStatus2) {
    const Outcome outcome = veskar({"report", recording, fused, "-o", "/dev/full"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: /dev/full: cannot write: No space left on device\n");
}

}  // namespace
