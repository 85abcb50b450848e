// SPDX-License-Identifier: Apache-2.0
// Runs veskar report as a user does.
#include "Process.h"
#include "SourceDirectory.h"

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

    /// @param words further words of the command
    Outcome report(std::vector<std::string> words) {
        words.insert(words.begin(), "report");
        words.insert(words.end(), {"-o", directory / "report.html"});
        return veskar(words);
    }

    /// @param words options for a report that must be rejected, besides the recording
    /// @return the message
    std::string refusalOf(const std::vector<std::string>& words) {
        const Outcome outcome = report(words);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(directory.names(), Not(testing::Contains("report.html")));
        return outcome.errors;
    }

    /// Makes files of another run: fused tracks NAME and explanations NAME.why.
    /// @param source a recording
    /// @param words further words of the command
    std::string replayed(const std::string& name, const std::string& source,
                         std::vector<std::string> words = {}) {
        std::string path = directory / name;
        words.insert(words.begin(), {"replay", source, "-o", path, "--explain", path + ".why"});
        EXPECT_EQ(veskar(words).status, 0);
        return path;
    }

    /// @return a recording of the same scene with another seed
    std::string otherRecording() {
        std::string path = directory / "other.jsonl";
        EXPECT_EQ(
            veskar({"simulate", dataFile("tiny.scenario.json"), "--seed", "2", "-o", path}).status,
            0);
        return path;
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

TEST_F(ReportProgram, FetchesAMapOnlyWhenAskedTo) {
    const std::string path = directory / "report.html";
    ASSERT_EQ(veskar({"report", recording, fused, "-o", path}).status, 0);
    EXPECT_THAT(slurp(path), HasSubstr("; img-src data:; "));
    EXPECT_FALSE(dataIn(slurp(path)).contains("map"));
    const std::string tiles = "https://tiles.example/{z}/{x}/{y}.png";
    ASSERT_EQ(veskar({"report", recording, fused, "--map-tiles", tiles, "--map-attribution",
                      "<b>somebody's</b>", "-o", path})
                  .status,
              0);
    EXPECT_THAT(slurp(path), HasSubstr("; img-src data: https://tiles.example; "));
    const nlohmann::json map{{"tiles", tiles}, {"attribution", "<b>somebody's</b>"}};
    EXPECT_EQ(dataIn(slurp(path))["map"], map);
}

TEST_F(ReportProgram, AMapNeedsItsAddressAndASite) {
    EXPECT_THAT(refusalOf({recording, fused, "--map-attribution", "a"}),
                HasSubstr("--map-attribution needs --map-tiles"));
    EXPECT_THAT(refusalOf({recording, fused, "--map-tiles", "tiles.png"}),
                HasSubstr("is no address of tiles"));
    std::string text = slurp(recording);
    const std::size_t site = text.find(R"("site":{)");
    text.erase(site, text.find('}', site) + 2 - site);
    spill(recording, text);
    ASSERT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    EXPECT_THAT(refusalOf({recording, fused, "--map-tiles", "https://a/{z}/{x}/{y}"}),
                HasSubstr("has no site: a map needs the device's latitude"));
}

TEST_F(ReportProgram, APartIsShownWithItsRun) {
    const std::string part = replayed("part.jsonl", recording, {"--start", "1", "--end", "3"});
    EXPECT_THAT(refusalOf({recording, part}), HasSubstr("another recording"));
    const Outcome outcome = report({recording, part, "--start", "1", "--end", "3"});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.errors, IsEmpty());
}

TEST_F(ReportProgram, HelpShowsAnExample) {
    const Outcome outcome = veskar({"report", "--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("Example:\n  veskar "));
}

TEST_F(ReportProgram, MarkupInNamesStaysText) {
    std::string text = slurp(recording);
    const std::string name = "\"name\":\"tiny\"";
    const std::string evil = R"("name":"</script><script>alert(1)</script>")";
    text.replace(text.find(name), name.size(), evil);
    spill(recording, text);
    ASSERT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    const Outcome outcome = veskar({"report", recording, fused, "-o", "-"});
    ASSERT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, Not(HasSubstr("<script>alert")));
    EXPECT_EQ(dataIn(outcome.output)["recording"]["name"], "</script><script>alert(1)</script>");
}

TEST_F(ReportProgram, ShowsTheConfigurationThatWasUsed) {
    std::string text = slurp(fused);
    const std::string used = "\"stationaryBlockingMinVideoAge\":3.0";
    ASSERT_NE(text.find(used), std::string::npos);
    // Like a configuration written by hand: the fusion uses its default instead of an integer.
    text.replace(text.find(used), used.size(), "\"stationaryBlockingMinVideoAge\":5");
    spill(fused, text);
    const Outcome outcome = veskar({"report", "--force", recording, fused, "-o", "-"});
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

TEST_F(ReportProgram, EveryRunIsOfTheRecording) {
    const std::string other = replayed("seed2.jsonl", otherRecording());
    const std::string refusal =
        "veskar: " + other + ": these tracks were not made from " + recording + ", ";
    EXPECT_THAT(refusalOf({recording, other}), StartsWith(refusal));
    EXPECT_THAT(refusalOf({recording, fused, other}), StartsWith(refusal));
    EXPECT_THAT(refusalOf({recording, other, fused}), HasSubstr(" --force\n"));
    const Outcome forced = report({recording, fused, other, "--force"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_THAT(forced.errors, StartsWith("veskar: warning: " + other + ": "));
    EXPECT_EQ(dataIn(slurp(directory / "report.html"))["runs"].size(), 2U);
}

TEST_F(ReportProgram, ExplanationsAreOfTheirRun) {
    const std::string first = replayed("first.jsonl", recording);
    const std::string other = replayed("other.fused", otherRecording());
    std::string configuration = slurp(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json");
    const std::string gate = "\"positionGatingDistance\": ";
    configuration.insert(configuration.find(gate) + gate.size(), "1");
    spill(directory / "wide.json", configuration);
    const std::string wide =
        replayed("wide.jsonl", recording, {"--config", directory / "wide.json"});
    const std::string header = slurp(recording).substr(0, slurp(recording).find('\n'));
    nlohmann::json camera = nlohmann::json::parse(header)["camera"];
    camera["position"][2] = 6.0;
    spill(directory / "camera.json", camera.dump());
    const std::string high =
        replayed("high.jsonl", recording, {"--camera", directory / "camera.json"});

    EXPECT_THAT(refusalOf({recording, first, "--explain", wide + ".why"}),
                StartsWith("veskar: " + wide +
                           ".why: these explanations are of a run with another "
                           "configuration than " +
                           first + "; "));
    EXPECT_THAT(refusalOf({recording, first, "--explain", high + ".why"}),
                StartsWith("veskar: " + high +
                           ".why: these explanations are of a run with another "
                           "camera than " +
                           first + "; "));
    EXPECT_THAT(refusalOf({recording, first, "--explain", other + ".why"}),
                StartsWith("veskar: " + other +
                           ".why: these explanations are of another recording "
                           "than " +
                           recording + "; "));
    EXPECT_THAT(refusalOf({recording, first, wide, "--explain", first + ".why", "--explain2",
                           first + ".why"}),
                HasSubstr("another configuration than " + wide));
    const Outcome fitting =
        report({recording, first, wide, "--explain", first + ".why", "--explain2", wide + ".why"});
    EXPECT_EQ(fitting.status, 0);
    EXPECT_THAT(fitting.errors, IsEmpty());
    const Outcome forced = report({recording, first, "--explain", wide + ".why", "--force"});
    EXPECT_EQ(forced.status, 0);
    EXPECT_THAT(forced.errors, StartsWith("veskar: warning: " + wide + ".why: "));
}

TEST_F(ReportProgram, FilesWithoutDigestsAreTakenWithAWarning) {
    const std::string first = replayed("first.jsonl", recording);
    for (const std::string& path : {first, first + ".why"}) {
        const std::string text = slurp(path);
        spill(path, text.substr(0, text.rfind("{\"digests\"")));
    }
    const Outcome outcome = report({recording, first, "--explain", first + ".why"});
    EXPECT_EQ(outcome.status, 0);
    const std::string warning = ": it does not state what it was made from ";
    EXPECT_THAT(outcome.errors, StartsWith("veskar: warning: " + first + warning));
    EXPECT_THAT(outcome.errors, HasSubstr("veskar: warning: " + first + ".why" + warning));
    EXPECT_THAT(outcome.errors, HasSubstr("whether it belongs to " + recording + " is not known"));
}

TEST_F(ReportProgram, AFullDiskIsStatus2) {
    const Outcome outcome = veskar({"report", recording, fused, "-o", "/dev/full"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: /dev/full: cannot write: No space left on device\n");
}

}  // namespace
