// SPDX-License-Identifier: Apache-2.0
// Compares the page's data with the files that it was made from.
#include <veskar-host/InputError.h>

#include "Process.h"
#include "report/Packed.h"
#include "report/Report.h"
#include "report/SceneOutline.h"

#include <fstream>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::ElementsAre;
using testing::HasSubstr;
using Veskar::Host::InputError;
using VeskarTest::dataFile;
using VeskarTest::numbersOf;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;
using Workbench::Json;

namespace {

class ReportPage : public testing::Test {
protected:
    void SetUp() override {
        recording = directory / "tiny.jsonl";
        fused = directory / "fused.jsonl";
        explained = directory / "why.jsonl";
        ASSERT_EQ(veskar({"simulate", dataFile("tiny.scenario.json"), "-o", recording}).status, 0);
        ASSERT_EQ(veskar({"replay", recording, "-o", fused, "--explain", explained}).status, 0);
    }

    static Json dataOf(const Workbench::ReportInputs& inputs) {
        const Workbench::Provenance provenance(
            Workbench::Mismatch::Refused,
            [](const std::string& warning) { ADD_FAILURE() << warning; });
        return Workbench::reportData(inputs, provenance, [](const Workbench::LineReader&) {});
    }

    static std::string faultOf(const Workbench::ReportInputs& inputs) {
        try {
            dataOf(inputs);
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

    /// @return the frames of a file, all or those of one source
    static std::vector<nlohmann::json> linesOf(const std::string& path,
                                               const std::string& source = "") {
        std::ifstream file(path);
        std::string line;
        std::vector<nlohmann::json> lines;
        while (std::getline(file, line)) {
            nlohmann::json frame = nlohmann::json::parse(line);
            const bool isWanted = frame.contains("source");
            if (isWanted && (source.empty() || frame["source"] == source)) {
                lines.push_back(std::move(frame));
            }
        }
        return lines;
    }

    /// Rows of a table by key and frame.
    static std::map<std::pair<int, int>, std::size_t> rowsOf(const Json& table) {
        const std::vector<double> ids = numbersOf(table["keys"]["id"]);
        const std::vector<double> counts = numbersOf(table["counts"]);
        const std::vector<double> skipped = numbersOf(table["skipped"]);
        std::map<std::pair<int, int>, std::size_t> rows;
        std::size_t row = 0;
        for (std::size_t track = 0; track < ids.size(); ++track) {
            int frame = 0;
            for (int i = 0; i < static_cast<int>(counts[track]); ++i, ++row) {
                frame += static_cast<int>(skipped[row]);
                rows[{static_cast<int>(ids[track]), frame++}] = row;
            }
        }
        return rows;
    }

    VeskarTest::TemporaryDirectory directory;
    std::string recording;
    std::string fused;
    std::string explained;
};

}  // namespace

TEST_F(ReportPage, HoldsEverySystemTrackOfEveryFrame) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& run = data["runs"][0];
    const auto rows = rowsOf(run["tracks"]);
    const std::vector<double> times = numbersOf(run["time"]);
    const std::vector<double> x = numbersOf(run["tracks"]["columns"]["x"]);
    const std::vector<double> left = numbersOf(run["tracks"]["columns"]["left"]);
    const std::vector<double> confirmed = numbersOf(run["tracks"]["columns"]["confirmed"]);
    const std::vector<double> classes = numbersOf(run["tracks"]["columns"]["class"]);
    const std::vector<nlohmann::json> lines = linesOf(fused);
    ASSERT_EQ(times.size(), lines.size());
    std::size_t checked = 0;
    for (std::size_t frame = 0; frame < lines.size(); ++frame) {
        EXPECT_NEAR(times[frame] + data["start"].get<double>(), lines[frame]["time"], 0.00051);
        for (const nlohmann::json& track : lines[frame]["tracks"]) {
            const auto row = rows.find({track["id"], static_cast<int>(frame)});
            ASSERT_NE(row, rows.end());
            EXPECT_NEAR(x[row->second], track["position"][0], 0.0051);
            EXPECT_NEAR(left[row->second], track["box"]["left"], 0.00026);
            EXPECT_EQ(confirmed[row->second] == 1.0, track["confirmed"].get<bool>());
            const double word = classes[row->second];
            EXPECT_EQ(std::isnan(word)
                          ? nlohmann::json("unknown")
                          : nlohmann::json(data["words"][static_cast<std::size_t>(word)]),
                      track.value("class", "unknown"));
            ++checked;
        }
    }
    EXPECT_EQ(rows.size(), checked);
    EXPECT_GT(checked, 100U);
}

TEST_F(ReportPage, DrawsTheEllipseOfTheCovariance) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& table = data["runs"][0]["tracks"];
    const auto rows = rowsOf(table);
    const std::vector<double> major = numbersOf(table["columns"]["major"]);
    const std::vector<double> minor = numbersOf(table["columns"]["minor"]);
    const std::vector<double> angle = numbersOf(table["columns"]["angle"]);
    const std::vector<nlohmann::json> lines = linesOf(fused);
    for (std::size_t frame = 0; frame < lines.size(); ++frame) {
        for (const nlohmann::json& track : lines[frame]["tracks"]) {
            const std::size_t row = rows.at({track["id"], static_cast<int>(frame)});
            // P = R diag(major^2, minor^2) R', element by element.
            const double c = std::cos(angle[row] * M_PI / 180.0);
            const double s = std::sin(angle[row] * M_PI / 180.0);
            const double a = major[row] * major[row];
            const double b = minor[row] * minor[row];
            const double tolerance = 0.02 * a + 0.02 * major[row] + 1e-4;
            EXPECT_NEAR(a * c * c + b * s * s, track["positionCovariance"][0], tolerance);
            EXPECT_NEAR((a - b) * c * s, track["positionCovariance"][1], tolerance);
            EXPECT_NEAR(a * s * s + b * c * c, track["positionCovariance"][2], tolerance);
        }
    }
}

TEST_F(ReportPage, TellsWhichSensorTracksFeedASystemTrack) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& sensors = data["runs"][0]["sensors"];
    std::map<std::array<int, 3>, int> expected;
    for (const nlohmann::json& line : linesOf(fused)) {
        for (const nlohmann::json& track : line["tracks"]) {
            for (const nlohmann::json& sensor : track["sensors"]) {
                ++expected[{track["id"].get<int>(), sensor["source"] == "radar" ? 1 : 0,
                            sensor["id"].get<int>()}];
            }
        }
    }
    std::map<std::array<int, 3>, int> found;
    const auto key = [&](const char* name) { return numbersOf(sensors["keys"][name]); };
    for (std::size_t i = 0; i < sensors["tracks"]; ++i) {
        found[{static_cast<int>(key("track")[i]), static_cast<int>(key("source")[i]),
               static_cast<int>(key("id")[i])}] = static_cast<int>(numbersOf(sensors["counts"])[i]);
    }
    EXPECT_EQ(found, expected);
}

TEST_F(ReportPage, HoldsTheReportsOfTheSensorsWhereTheyLieOnTheGround) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& table = data["radar"]["table"];
    const auto rows = rowsOf(table);
    const std::vector<double> x = numbersOf(table["columns"]["x"]);
    const std::vector<double> y = numbersOf(table["columns"]["y"]);
    const std::vector<nlohmann::json> lines = linesOf(recording, "radar");
    std::size_t checked = 0;
    for (std::size_t frame = 0; frame < lines.size(); ++frame) {
        for (const nlohmann::json& report : lines[frame]["tracks"]) {
            const std::size_t row = rows.at({report["id"], static_cast<int>(frame)});
            // The radar of this scene points straight ahead, 4.6 m above the origin.
            const double range = report["range"];
            const double ground = std::sqrt(range * range - 4.6 * 4.6);
            const double azimuth = report["azimuth"].get<double>() * M_PI / 180.0;
            EXPECT_NEAR(x[row], ground * std::cos(azimuth), 0.3);
            EXPECT_NEAR(y[row], -ground * std::sin(azimuth), 0.3);
            ++checked;
        }
    }
    EXPECT_EQ(rows.size(), checked);
    const Json& video = data["video"]["table"];
    const auto videoRows = rowsOf(video);
    const std::vector<double> top = numbersOf(video["columns"]["top"]);
    const std::vector<nlohmann::json> videoLines = linesOf(recording, "video");
    for (std::size_t frame = 0; frame < videoLines.size(); ++frame) {
        for (const nlohmann::json& report : videoLines[frame]["tracks"]) {
            EXPECT_NEAR(top[videoRows.at({report["id"], static_cast<int>(frame)})],
                        report["box"]["top"], 0.00026);
        }
    }
}

TEST_F(ReportPage, TellsWhereOnEarthTheGroundIs) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& earth = data["scene"]["earth"];
    const double heading = earth["heading"].get<double>() * M_PI / 180.0;
    // Files have millimetres and 1e-8 of a degree.
    constexpr double tolerance = 2e-8;
    std::size_t checked = 0;
    for (const nlohmann::json& line : linesOf(fused)) {
        for (const nlohmann::json& track : line["tracks"]) {
            const double x = track["position"][0];
            const double y = track["position"][1];
            const double north = x * std::cos(heading) + y * std::sin(heading);
            const double east = x * std::sin(heading) - y * std::cos(heading);
            EXPECT_NEAR(
                earth["latitude"].get<double>() + north * earth["latitudePerNorth"].get<double>(),
                track["geo"]["latitude"], tolerance);
            EXPECT_NEAR(
                earth["longitude"].get<double>() + east * earth["longitudePerEast"].get<double>(),
                track["geo"]["longitude"], tolerance);
            ++checked;
        }
    }
    EXPECT_GT(checked, 100U);
}

TEST_F(ReportPage, KnowsNoPlaceOnEarthWithoutASite) {
    std::string text = slurp(recording);
    const std::size_t site = text.find("\"site\":");
    ASSERT_NE(site, std::string::npos);
    text.erase(site, text.find('}', site) + 2 - site);
    const std::string elsewhere = directory / "elsewhere.jsonl";
    spill(elsewhere, text);
    ASSERT_EQ(veskar({"replay", elsewhere, "-o", fused}).status, 0);
    EXPECT_TRUE(dataOf({elsewhere, {{fused, ""}}})["scene"]["earth"].is_null());
}

TEST_F(ReportPage, HoldsDefaultSettingsOnce) {
    const Json data = dataOf({recording, {{fused, ""}}});
    EXPECT_TRUE(data["defaults"].is_null());
    EXPECT_EQ(data["runs"][0]["configuration"]["veskarHost"]["cutBoxStd"], 0.3);
}

TEST_F(ReportPage, HoldsTheSettingsThatTheRunUsedAndTheDefaults) {
    ASSERT_EQ(veskar({"replay", recording, "-o", fused, "--set", "veskarHost.cutBoxStd=0.7",
                      "--set", "veskarModule.trackKillTime=0.25"})
                  .status,
              0);
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& used = data["runs"][0]["configuration"];
    EXPECT_EQ(used["veskarHost"]["cutBoxStd"], 0.7);
    EXPECT_EQ(used["veskarModule"]["trackKillTime"], 0.25);
    const Json& defaults = data["defaults"];
    EXPECT_EQ(defaults["veskarHost"]["cutBoxStd"], 0.3);
    EXPECT_EQ(defaults["veskarModule"]["trackKillTime"], 0.5);
    EXPECT_EQ(used["veskarRules"], defaults["veskarRules"]);
    EXPECT_EQ(used["veskarModule"].size(), defaults["veskarModule"].size());
}

TEST_F(ReportPage, HoldsTheTruth) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const auto rows = rowsOf(data["truth"]["table"]);
    const std::vector<double> x = numbersOf(data["truth"]["table"]["columns"]["x"]);
    std::size_t checked = 0;
    const std::vector<nlohmann::json> lines = linesOf(recording, "truth");
    for (std::size_t frame = 0; frame < lines.size(); ++frame) {
        for (const nlohmann::json& object : lines[frame]["objects"]) {
            EXPECT_NEAR(x[rows.at({object["id"], static_cast<int>(frame)})], object["position"][0],
                        0.0051);
            ++checked;
        }
    }
    EXPECT_EQ(rows.size(), checked);
    EXPECT_GT(checked, 100U);
}

TEST_F(ReportPage, HoldsEveryExplanation) {
    const Json data = dataOf({recording, {{fused, explained}}});
    const Json& explanation = data["runs"][0]["explanation"];
    std::size_t pairs = 0;
    std::size_t events = 0;
    const std::vector<nlohmann::json> frames = linesOf(explained);
    for (const nlohmann::json& frame : frames) {
        for (const char* name : {"continuations", "candidates", "mergeCandidates"}) {
            pairs += frame.value(name, nlohmann::json::array()).size();
        }
        for (const char* name : {"starts", "confirmations", "prunings", "deletions"}) {
            events += frame.value(name, nlohmann::json::array()).size();
        }
    }
    EXPECT_EQ(explanation["pairs"]["rows"], pairs);
    EXPECT_EQ(explanation["events"]["rows"], events);
    EXPECT_EQ(explanation["pairs"]["frames"], frames.size());
    // Their times have the same origin as those of the tracks.
    EXPECT_EQ(numbersOf(explanation["time"]), numbersOf(data["runs"][0]["time"]));
    EXPECT_TRUE(dataOf({recording, {{fused, ""}}})["runs"][0]["explanation"].is_null());
}

TEST_F(ReportPage, HoldsTheJudgementThatEvaluateTells) {
    const Json judgement = dataOf({recording, {{fused, ""}}})["runs"][0]["judgement"];
    const nlohmann::json told =
        nlohmann::json::parse(veskar({"evaluate", recording, "--format", "json"}).output)["parts"];
    ASSERT_EQ(judgement["parts"].size(), told.size());
    for (const Json& part : judgement["parts"]) {
        const nlohmann::json& expected = told[part["part"].get<std::string>()];
        for (const Json& figure : part["figures"]) {
            for (std::size_t i = 0; i < part["trackers"].size(); ++i) {
                const nlohmann::json& value = expected[part["trackers"][i].get<std::string>()]
                                                      [figure["key"].get<std::string>()];
                ASSERT_EQ(figure["values"][i].is_null(), value.is_null()) << figure;
                if (!value.is_null()) {
                    // The file of fused tracks is rounded, for example to millimetres.
                    EXPECT_NEAR(figure["values"][i], value,
                                0.001 + 0.001 * std::abs(value.get<double>()))
                        << figure;
                }
            }
        }
    }
    // The mean of the series over time is the metric.
    double sum = 0.0;
    const std::vector<double> gospa = numbersOf(judgement["gospa"]);
    for (const double distance : gospa) {
        sum += distance;
    }
    EXPECT_NEAR(sum / static_cast<double>(gospa.size()), told["all"]["fusion"]["GOSPA"], 0.005);
}

TEST_F(ReportPage, MatchesObjectsWithTracksThatAreNear) {
    const Json data = dataOf({recording, {{fused, ""}}});
    const Json& matches = data["runs"][0]["judgement"]["matches"];
    const auto rows = [&] {
        Json named = matches;
        named["keys"]["id"] = matches["keys"]["object"];
        return rowsOf(named);
    }();
    const std::vector<double> tracks = numbersOf(matches["columns"]["track"]);
    std::set<int> ids;
    for (const nlohmann::json& line : linesOf(fused)) {
        for (const nlohmann::json& track : line["tracks"]) {
            ids.insert(track["id"].get<int>());
        }
    }
    ASSERT_GT(rows.size(), 50U);
    for (const double track : tracks) {
        EXPECT_TRUE(ids.count(static_cast<int>(track)) > 0) << track;
    }
}

TEST_F(ReportPage, DoesNotJudgeWithoutTruth) {
    std::string text = slurp(recording);
    const std::string complete = "\"truth\":\"complete\"";
    text.replace(text.find(complete), complete.size(), "\"truth\":\"none\"");
    spill(recording, text);
    ASSERT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    EXPECT_TRUE(dataOf({recording, {{fused, ""}}})["runs"][0]["judgement"].is_null());
}

TEST_F(ReportPage, ShowsTwoRunsOnOneClock) {
    const Json data = dataOf({recording, {{fused, ""}, {fused, explained}}});
    ASSERT_EQ(data["runs"].size(), 2U);
    EXPECT_EQ(data["runs"][0]["tracks"], data["runs"][1]["tracks"]);
    EXPECT_TRUE(data["runs"][0]["explanation"].is_null());
    EXPECT_FALSE(data["runs"][1]["explanation"].is_null());
}

TEST_F(ReportPage, NamesRunsByTheirFilesWithoutTheirPlace) {
    EXPECT_EQ(dataOf({recording, {{fused, ""}}})["runs"][0]["label"], "fused.jsonl");
}

TEST_F(ReportPage, RefusesTracksOfAnotherRecording) {
    std::string text = slurp(fused);
    const std::string name = "\"name\":\"tiny\"";
    text.replace(text.find(name), name.size(), "\"name\":\"other\"");
    spill(directory / "other", text);
    EXPECT_THAT(
        faultOf({recording, {{directory / "other", ""}}}),
        HasSubstr(":1: name: these tracks are of the recording \"other\", not of \"tiny\""));
}

TEST_F(ReportPage, SaysWhatIsWrongWithAnExplanation) {
    spill(directory / "bad", "{\"source\":\"video\",\"time\":1}\n{\"time\":true}\n");
    EXPECT_THAT(faultOf({recording, {{fused, directory / "bad"}}}),
                HasSubstr("bad:2: time: expected a number"));
    spill(directory / "bad", "{\"source\"");
    EXPECT_THAT(faultOf({recording, {{fused, directory / "bad"}}}), HasSubstr("bad:1: "));
}

TEST_F(ReportPage, RefusesARecordingWithoutAnyFrame) {
    const std::string header = slurp(recording);
    spill(directory / "empty", header.substr(0, header.find('\n') + 1));
    ASSERT_EQ(veskar({"replay", directory / "empty", "-o", directory / "none"}).status, 0);
    EXPECT_THAT(faultOf({directory / "empty", {{directory / "none", ""}}}),
                HasSubstr("has no frame"));
}

TEST(ReportText, CanStandInAnyElement) {
    const Json data{{"name", "</script><b>&\xe2\x80\xa8\xff\"\\"}};
    const std::string text = Workbench::embeddable(data);
    for (const char c : text) {
        EXPECT_TRUE(c >= ' ' && c <= '~' && c != '<' && c != '>' && c != '&') << c;
    }
    EXPECT_EQ(nlohmann::json::parse(text)["name"], "</script><b>&\xe2\x80\xa8\xef\xbf\xbd\"\\");
}

TEST(ReportRings, AreAFewRoundDistances) {
    EXPECT_THAT(Workbench::ringDistances(120.0), ElementsAre(20, 40, 60, 80, 100, 120));
    EXPECT_THAT(Workbench::ringDistances(150.0), ElementsAre(50, 100, 150));
    EXPECT_THAT(Workbench::ringDistances(5.5), ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THAT(Workbench::ringDistances(9000.0), testing::SizeIs(6));
}
