// SPDX-License-Identifier: Apache-2.0
// What `veskar export` writes of a recording and its runs.
#include "Process.h"
#include "support/TemporaryDirectory.h"

#include <cmath>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

using Words = std::vector<std::string>;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// @param line without quoted cells
std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells{""};
    for (const char c : line) {
        if (c == ',') {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

/// @param replaced a part of the header
std::string tinyWith(const std::string& replaced, const std::string& replacement) {
    std::string text = slurp(dataFile("tiny.jsonl"));
    const std::size_t at = text.find(replaced);
    EXPECT_LT(at, text.find('\n'));
    return text.replace(at, replaced.size(), replacement);
}

const std::string tinySite = R"("site":{"latitude":55.7189,"longitude":13.2254,"heading":140.0},)";

class ExportProgram : public testing::Test {
protected:
    std::string exported(Words arguments) {
        arguments.insert(arguments.begin(), "export");
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(outcome.errors, IsEmpty());
        return outcome.output;
    }

    /// @return the rows of a CSV behind its header, cell by cell
    std::vector<std::vector<std::string>> rows(const Words& arguments) {
        std::vector<std::vector<std::string>> all;
        for (const std::string& line : linesOf(exported(arguments))) {
            all.push_back(cellsOf(line));
            EXPECT_EQ(all.back().size(), all.front().size()) << line;
        }
        all.erase(all.begin());
        return all;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string recording = dataFile("tiny.jsonl");
    const std::string fused = dataFile("tiny.fused.jsonl");
};

TEST_F(ExportProgram, CsvOfARunIsThatOfReplay) {
    const std::string run = directory / "run.jsonl";
    ASSERT_EQ(veskar({"replay", recording, "-o", run}).status, 0);
    const std::vector<std::string> replayed =
        linesOf(veskar({"replay", recording, "--format", "csv"}).output);
    std::vector<std::string> tracks;
    for (std::string line :
         linesOf(exported({recording, run, "--to", "csv", "--layer", "fused"}))) {
        for (int cell = 0; cell < 4; ++cell) {
            line.erase(line.rfind(','));  // the box
        }
        line.erase(0, line.find(',', line.find(',') + 1) + 1);  // layer and UTC
        if (!cellsOf(line)[4].empty()) {
            tracks.push_back(line);
        }
    }
    EXPECT_GT(tracks.size(), 100);
    EXPECT_EQ(tracks, replayed);
}

TEST_F(ExportProgram, CsvHasARowForEveryReportAndEveryEmptyFrame) {
    std::map<std::string, std::size_t> expected;
    const std::vector<std::string> lines = linesOf(slurp(recording));
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const json frame = json::parse(lines[i]);
        const std::string layer = frame["source"];
        const json& members = frame[layer == "truth" ? "objects" : "tracks"];
        expected[layer] += members.empty() ? 1 : members.size();
    }
    std::map<std::string, std::size_t> written;
    for (const auto& row : rows({recording, "--to", "csv"})) {
        ++written[row[0]];
    }
    EXPECT_EQ(written, expected);
    EXPECT_THAT(expected, ElementsAre(Pair("radar", 67), Pair("truth", 117), Pair("video", 45)));
}

TEST_F(ExportProgram, CsvKeepsFramesWithoutTracksAndUtc) {
    const std::string text = tinyWith("\"seed\":1", "\"epoch\":1777636800");
    spill(directory / "one.jsonl",
          text.substr(0, text.find('\n') + 1) +
              "{\"source\":\"radar\",\"time\":1.5,\"received\":1.75,\"tracks\":[]}\n");
    const auto all = rows({directory / "one.jsonl", "--to", "csv"});
    ASSERT_EQ(all.size(), 1);
    Words expected{"radar", "2026-05-01T12:00:01.500000Z", "1.5", "1.75", "radar"};
    expected.resize(all[0].size());
    EXPECT_EQ(all[0], expected);
}

TEST_F(ExportProgram, RunsAreLayersOfTheirOwn) {
    std::map<std::string, std::size_t> written;
    for (const auto& row :
         rows({recording, fused, fused, "--to", "csv", "--layer", "fused", "--layer", "truth"})) {
        ++written[row[0]];
    }
    EXPECT_THAT(written, ElementsAre(Pair("fused", written["fused2"]),
                                     Pair("fused2", written["fused"]), Pair("truth", 117)));
}

TEST_F(ExportProgram, APartIsExportedWithItsRun) {
    const std::string part = directory / "part.jsonl";
    const Words span{"--start", "1", "--end", "3"};
    Words replay{"replay", recording, "-o", part};
    replay.insert(replay.end(), span.begin(), span.end());
    ASSERT_EQ(veskar(replay).status, 0);
    Words words{recording, part, "--to", "csv"};
    EXPECT_EQ(veskar({"export", recording, part, "--to", "csv"}).status, 2);
    words.insert(words.end(), span.begin(), span.end());
    const std::size_t lines = linesOf(exported(words)).size();
    EXPECT_GT(lines, 50U);
    EXPECT_LT(lines, linesOf(exported({recording, "--to", "csv"})).size());
}

TEST_F(ExportProgram, GeoJsonHasEveryPositionOfARun) {
    using Way = std::vector<json>;  // time, longitude, latitude
    std::map<int, Way> written;
    const json document =
        json::parse(exported({recording, fused, "--to", "geojson", "--layer", "fused"}));
    EXPECT_EQ(document["features"][0]["properties"]["layer"], "device");
    for (const json& feature : document["features"]) {
        const json& properties = feature["properties"];
        if (properties["layer"] == "device") {
            continue;
        }
        EXPECT_EQ(properties["layer"], "fused");
        EXPECT_EQ(feature["geometry"]["type"], "LineString");
        const json& times = properties["times"];
        const json& places = feature["geometry"]["coordinates"];
        ASSERT_EQ(places.size(), times.size());
        ASSERT_EQ(properties["speeds"].size(), times.size());
        for (std::size_t i = 0; i < times.size(); ++i) {
            written[properties["id"]].push_back({times[i], places[i][0], places[i][1]});
        }
    }
    std::map<int, Way> expected;
    for (const std::string& line : linesOf(slurp(fused))) {
        const json frame = json::parse(line);
        for (const json& track : frame.value("tracks", json::array())) {
            const json& geo = track["geo"];
            expected[track["id"]].push_back({frame["time"], geo["longitude"], geo["latitude"]});
        }
    }
    EXPECT_EQ(expected.size(), 9);
    EXPECT_EQ(written, expected);
}

TEST_F(ExportProgram, GeoJsonNeedsAPlaceOnEarth) {
    const std::string path = directory / "nowhere.jsonl";
    spill(path, tinyWith(tinySite, ""));
    const Outcome outcome =
        veskar({"export", path, "--to", "geojson", "-o", directory / "out.geojson"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("give --site"));
    EXPECT_THAT(directory.names(), ElementsAre("nowhere.jsonl"));
    EXPECT_EQ(exported({path, "--to", "geojson", "--site", "55.7189", "13.2254", "140"}),
              exported({recording, "--to", "geojson"}));
}

TEST_F(ExportProgram, AStatedSiteReplacesThatOfRecordingAndRun) {
    const auto all = rows({recording, fused, "--to", "csv", "--site", "10", "20", "0"});
    EXPECT_GT(all.size(), 300);
    for (const auto& row : all) {
        if (!row[5].empty() && !row[11].empty()) {  // a track on the ground
            EXPECT_NEAR(std::stod(row[25]), 10.0, 0.01);
            EXPECT_NEAR(std::stod(row[26]), 20.0, 0.01);
        }
    }
}

TEST_F(ExportProgram, RefusesSitesThatAreNone) {
    for (const Words& site : {Words{"91", "0", "0"}, {"0", "181", "0"}, {"0", "0", "nan"}}) {
        Words words{"export", recording, "--to", "csv", "--site"};
        words.insert(words.end(), site.begin(), site.end());
        const Outcome outcome = veskar(words);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(outcome.errors, StartsWith("veskar export: --site: "));
    }
}

TEST_F(ExportProgram, RefusesTheRunOfAnotherRecording) {
    const std::string other = directory / "other.jsonl";
    spill(other, tinyWith("\"seed\":1", "\"seed\":2"));
    const Words words{"export", other, fused, "--to", "csv"};
    const Outcome refused = veskar(words);
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.errors, HasSubstr(fused));
    Words forced = words;
    forced.emplace_back("--force");
    EXPECT_EQ(veskar(forced).status, 0);
}

TEST_F(ExportProgram, NamesItsFormats) {
    EXPECT_EQ(veskar({"export", recording, "--to", "cvs"}).errors,
              "veskar export: --to: cvs not in {csv,geojson,mcap,mot,kitti,onvif-xml,onvif-json}\n"
              "Run \"veskar export --help\" for more information.\n");
}

}  // namespace
