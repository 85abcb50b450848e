// SPDX-License-Identifier: Apache-2.0
// Recordings and runs in the layouts of tracking benchmarks, and results back as runs.
#include "Process.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

using Words = std::vector<std::string>;
using Rows = std::vector<std::vector<double>>;

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The numbers of a file between commas, as evaluators of MOTChallenge read them.
Rows numbersIn(const std::string& path) {
    Rows rows;
    for (const std::string& line : linesOf(slurp(path))) {
        rows.emplace_back();
        std::istringstream stream(line);
        for (std::string cell; std::getline(stream, cell, ',');) {
            rows.back().push_back(std::stod(cell));
        }
    }
    return rows;
}

class Exchange : public testing::Test {
protected:
    void SetUp() override { succeed({"replay", recording, "-o", run}); }

    static std::string succeed(const Words& words) {
        const Outcome outcome = veskar(words);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_THAT(outcome.errors, IsEmpty());
        return outcome.output;
    }

    void exportTo(const std::string& format) const {
        succeed({"export", recording, run, "--to", format, "-o", layout});
    }

    json figuresOf(const std::string& tracks) const {
        return json::parse(
            succeed({"evaluate", recording, tracks, "--format", "json"}))["parts"]["all"]["fusion"];
    }

    /// @param lost figures that the format does not carry
    void expectSameFigures(const std::string& tracks, const std::set<std::string>& lost) const {
        const json before = figuresOf(run);
        const json after = figuresOf(tracks);
        EXPECT_GT(before["HOTA"], 0.5);
        std::size_t compared = 0;
        for (const auto& [key, value] : before.items()) {
            if (lost.count(key) == 0 && value.is_number()) {
                EXPECT_NEAR(after[key], value, 1e-3) << key;
                ++compared;
            }
        }
        EXPECT_GT(compared, 25);
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string recording = dataFile("tiny.jsonl");
    const std::string run = directory / "run.jsonl";
    const std::string layout = directory / "layout";
    const std::string imported = directory / "imported.jsonl";
};

TEST_F(Exchange, ARunThatWasMotHasTheSameFigures) {
    exportTo("mot");
    succeed({"import", "mot", layout + "/trackers/mot_challenge/MOT15-train/fused/ground/tiny.txt",
             recording, "-o", imported});
    expectSameFigures(imported, {"velocity_rmse", "class_agreement", "NEES", "NEES_within_95"});
}

TEST_F(Exchange, ARunThatWasKittiHasTheSameFigures) {
    exportTo("kitti");
    succeed({"import", "kitti-results",
             layout + "/trackers/kitti/kitti_2d_box_train/fused/data/tiny.txt", recording, "-o",
             imported});
    expectSameFigures(imported, {"velocity_rmse", "NEES", "NEES_within_95"});
}

// TrackEval's rules: the list of sequences has a title; each sequence has its length in
// seqinfo.ini; frames count from 1 to it; ids are unique in a frame; the truth's column 7 is not 0
// where it counts, and has at least eight columns; column 8 of a tracker is a class of at most 1.
TEST_F(Exchange, MotIsWhatTrackEvalReads) {
    exportTo("mot");
    const std::string gt = layout + "/gt/mot_challenge/";
    EXPECT_EQ(slurp(gt + "seqmaps/MOT15-train.txt"), "name\ntiny\n");
    const std::string info = slurp(gt + "MOT15-train/tiny/seqinfo.ini");
    EXPECT_THAT(info, testing::StartsWith("[Sequence]\nname=tiny\n"));
    EXPECT_THAT(info, HasSubstr("\nimWidth=1920\nimHeight=1080\n"));
    const std::size_t stated = info.find("seqLength=");
    ASSERT_NE(stated, std::string::npos);
    const int length = std::stoi(info.substr(stated + 10));
    std::size_t moments = 0;
    for (const std::string& line : linesOf(slurp(recording))) {
        moments += line.find("\"source\":\"truth\"") < line.size() ? 1 : 0;
    }
    EXPECT_EQ(length, moments);

    const auto expectRows = [&](const Rows& rows) {
        EXPECT_GT(rows.size(), 30);
        std::set<std::pair<double, double>> seen;
        for (const auto& row : rows) {
            ASSERT_EQ(row.size(), 10);
            EXPECT_TRUE(row[0] >= 1 && row[0] <= length);
            EXPECT_TRUE(seen.insert({row[0], row[1]}).second);
        }
    };
    const Rows truth = numbersIn(gt + "MOT15-train/tiny/gt/gt.txt");
    expectRows(truth);
    EXPECT_EQ(truth.size(), 117);
    std::size_t counted = 0;
    for (const auto& row : truth) {
        counted += row[6] == 1.0 ? 1 : 0;
        EXPECT_EQ(row[6] == 1.0, row[4] > 0.0) << "what has no box does not count";
    }
    EXPECT_GT(counted, 80);
    for (const std::string tracker : {"fused", "radar", "video"}) {
        const Rows boxes =
            numbersIn(layout + "/trackers/mot_challenge/MOT15-train/" + tracker + "/data/tiny.txt");
        if (tracker != "radar") {  // has no boxes
            expectRows(boxes);
        }
        for (const auto& row : boxes) {
            EXPECT_EQ(std::vector<double>(row.begin() + 7, row.end()),
                      std::vector<double>(3, -1.0));
        }
    }
}

/// The share of the tracks' boxes that overlap an object's box by half, as TrackEval compares them.
double shareOfMatches(const Rows& truth, const Rows& tracks) {
    const auto overlap = [](const std::vector<double>& a, const std::vector<double>& b) {
        const double width = std::min(a[2] + a[4], b[2] + b[4]) - std::max(a[2], b[2]);
        const double height = std::min(a[3] + a[5], b[3] + b[5]) - std::max(a[3], b[3]);
        const double common = std::max(width, 0.0) * std::max(height, 0.0);
        return common / (a[4] * a[5] + b[4] * b[5] - common);
    };
    std::size_t matched = 0;
    for (const auto& track : tracks) {
        matched += std::any_of(truth.begin(), truth.end(), [&](const auto& object) {
            return object[0] == track[0] && object[6] == 1.0 && overlap(object, track) >= 0.5;
        });
    }
    return static_cast<double>(matched) / static_cast<double>(tracks.size());
}

TEST_F(Exchange, BoxesOfTheTruthLieOnThoseOfTheCamera) {
    exportTo("mot");
    const Rows truth = numbersIn(layout + "/gt/mot_challenge/MOT15-train/tiny/gt/gt.txt");
    const Rows video =
        numbersIn(layout + "/trackers/mot_challenge/MOT15-train/video/data/tiny.txt");
    EXPECT_GT(shareOfMatches(truth, video), 0.8);  // reports are up to 0.1 s old and have noise
}

// TrackEval's rules: the list of sequences has four columns, the last is the number of frames,
// which count from 0; the truth is in label_02.
TEST_F(Exchange, KittiIsWhatTrackEvalReads) {
    exportTo("kitti");
    const std::string gt = layout + "/gt/kitti/kitti_2d_box_train/";
    std::istringstream map(slurp(gt + "evaluate_tracking.seqmap.training"));
    std::string name;
    std::string kind;
    int first = -1;
    int frames = 0;
    map >> name >> kind >> first >> frames;
    EXPECT_EQ(name, "tiny");
    EXPECT_EQ(first, 0);
    EXPECT_GT(frames, 30);
    const auto expectRows = [&](const std::string& path, std::size_t columns) {
        const std::vector<std::string> lines = linesOf(slurp(path));
        EXPECT_GT(lines.size(), 30);
        for (const std::string& line : lines) {
            std::istringstream words(line);
            const Words cells{std::istream_iterator<std::string>(words), {}};
            ASSERT_EQ(cells.size(), columns);
            EXPECT_TRUE(std::stoi(cells[0]) >= 0 && std::stoi(cells[0]) < frames);
            EXPECT_THAT(cells[2], testing::AnyOf("Car", "Pedestrian", "Misc"));
        }
    };
    expectRows(gt + "label_02/tiny.txt", 17);
    expectRows(layout + "/trackers/kitti/kitti_2d_box_train/fused/data/tiny.txt", 18);
}

TEST_F(Exchange, FurtherRecordingsAreFurtherSequences) {
    std::string text = slurp(recording);
    text.replace(text.find("\"tiny\""), 6, "\"a/b c\"");
    spill(directory / "other.jsonl", text);
    for (const std::string format : {"mot", "kitti"}) {
        exportTo(format);
        succeed({"export", directory / "other.jsonl", "--to", format, "-o", layout});
        exportTo(format);
    }
    EXPECT_EQ(slurp(layout + "/gt/mot_challenge/seqmaps/MOT15-train.txt"), "name\na_b_c\ntiny\n");
    EXPECT_TRUE(fs::exists(layout + "/gt/mot_challenge/MOT15-train/a_b_c/gt/gt.txt"));
    EXPECT_EQ(
        linesOf(slurp(layout + "/gt/kitti/kitti_2d_box_train/evaluate_tracking.seqmap.training"))
            .size(),
        2);
}

TEST_F(Exchange, FramesWithoutTruthAreThoseOfTheCamera) {
    std::string text;
    std::size_t frames = 0;
    for (std::string line : linesOf(slurp(recording))) {
        if (line.find("\"source\":\"truth\"") == std::string::npos) {
            const std::string truth = ",\"truth\":\"complete\"";
            const std::size_t at = line.find(truth);
            text += at == std::string::npos ? line : line.erase(at, truth.size());
            text += '\n';
            frames += line.find("\"source\":\"video\"") < line.size() ? 1 : 0;
        }
    }
    const std::string untold = directory / "untold.jsonl";
    spill(untold, text);
    succeed({"export", untold, "--to", "mot", "-o", layout});
    EXPECT_FALSE(fs::exists(layout + "/gt"));
    const std::string results =
        layout + "/trackers/mot_challenge/MOT15-train/video/ground/tiny.txt";
    EXPECT_THAT(numbersIn(results), testing::SizeIs(testing::Gt(30)));
    succeed({"import", "mot", results, untold, "-o", imported});
    EXPECT_EQ(linesOf(slurp(imported)).size(), frames + 2);  // header and closing line
}

TEST_F(Exchange, LayoutsNeedADirectory) {
    const Outcome outcome = veskar({"export", recording, "--to", "mot"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("name a directory"));
    spill(layout, "precious");
    EXPECT_EQ(veskar({"export", recording, "--to", "kitti", "-o", layout}).status, 2);
    EXPECT_EQ(slurp(layout), "precious");
}

TEST_F(Exchange, ResultsWithMoreFramesThanTheRecordingNeedTheirRate) {
    spill(directory / "long.txt", "1,1,0,0,1,1,1,10,0,0\n5000,1,0,0,1,1,1,10,0,0\n");
    const Outcome outcome = veskar({"import", "mot", directory / "long.txt", recording});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, testing::AllOf(HasSubstr("5000 frames"), HasSubstr("--rate")));
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_EQ(
        linesOf(succeed({"import", "mot", directory / "long.txt", recording, "--rate", "1000"}))
            .size(),
        5002);
}

// The radar's reports of the recording as a table, in other units, and back.
TEST_F(Exchange, ATableOfTheRadarIsTheRadarAgain) {
    const std::vector<std::string> lines = linesOf(slurp(recording));
    json recipe{{"recording", json::parse(lines[0])}};
    recipe["recording"].erase("format");
    recipe["recording"].erase("version");
    recipe["recording"].erase("truth");
    const auto column = [](const char* name, const char* unit) {
        return json{{"column", name}, {"unit", unit}};
    };
    recipe["radar"] = {{"separator", ";"},
                       {"columns",
                        {{"time", column("stamp", "ms")},
                         {"received", column("arrival", "ms")},
                         {"id", {{"column", "object"}}},
                         {"coasting", column("lost", "s")},
                         {"range", column("distance", "cm")},
                         {"azimuth", column("angle", "deg")},
                         {"speed", column("speed", "m/s")},
                         {"direction", column("course", "deg")},
                         {"class", {{"column", "kind"}}}}}};
    std::string table = "stamp;arrival;object;lost;distance;angle;speed;course;kind\n";
    std::vector<json> expected;
    for (const std::string& line : lines) {
        const json frame = json::parse(line);
        if (frame.value("source", "") != "radar") {
            continue;
        }
        const auto times = std::to_string(1000.0 * frame["time"].get<double>()) + ";" +
                           std::to_string(1000.0 * frame["received"].get<double>()) + ";";
        json tracks = json::array();
        for (const json& track : frame["tracks"]) {
            const auto cell = [&](const char* key) {
                return track.contains(key) ? track[key].dump() + ";" : std::string(";");
            };
            table += times + cell("id") + cell("coasting") +
                     std::to_string(100.0 * track["range"].get<double>()) + ";" + cell("azimuth") +
                     cell("speed") + cell("direction") + track.value("class", "") + "\n";
            tracks.push_back({track["id"], track["range"], track["azimuth"]});
        }
        if (tracks.empty()) {
            table += times + ";;;;;;\n";
        }
        expected.push_back({frame["time"], frame["received"], tracks});
    }
    spill(directory / "recipe.json", recipe.dump());
    spill(directory / "radar.csv", table);
    const std::string made = directory / "made.jsonl";
    succeed({"import", "csv", "--recipe", directory / "recipe.json", "--radar",
             directory / "radar.csv", "-o", made});
    std::vector<json> frames;
    for (const std::string& line : linesOf(slurp(made))) {
        const json frame = json::parse(line);
        if (!frame.contains("tracks")) {
            continue;
        }
        json tracks = json::array();
        for (const json& track : frame["tracks"]) {
            tracks.push_back({track["id"], track["range"], track["azimuth"]});
        }
        frames.push_back({frame["time"], frame["received"], tracks});
    }
    EXPECT_EQ(frames.size(), 20);
    EXPECT_EQ(frames, expected);
    succeed({"replay", made, "-o", directory / "fused.jsonl"});
}

TEST_F(Exchange, ClassesThatNobodyKnowsAreTold) {
    spill(directory / "results.txt",
          "0 1 Zeppelin -1 -1 -10 1 2 3 4 -1 -1 -1 -2.5 1.7 12.5 -10 0.5\n");
    const Outcome outcome =
        veskar({"import", "kitti-results", directory / "results.txt", recording, "-o", imported});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("class \"Zeppelin\""));
}

}  // namespace
