// SPDX-License-Identifier: Apache-2.0
// Runs evaluate, check and replay --explain as a user does.
#include "Process.h"
#include "SourceDirectory.h"

#include <cmath>
#include <ostream>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

class Judgement : public testing::Test {
protected:
    std::string recording() {
        std::string path = directory / "tiny.jsonl";
        EXPECT_EQ(veskar({"simulate", dataFile("tiny.scenario.json"), "-o", path}).status, 0);
        return path;
    }

    /// A copy of a recording whose header states another kind of truth.
    std::string withTruth(const std::string& path, const std::string& kind) {
        std::string text = slurp(path);
        const std::string complete = "\"truth\":\"complete\"";
        const std::size_t place = text.find(complete);
        EXPECT_NE(place, std::string::npos);
        text.replace(place, complete.size(), "\"truth\":\"" + kind + "\"");
        spill(directory / "other.jsonl", text);
        return directory / "other.jsonl";
    }

    /// Five minutes of the shipped perimeter scenario, without video faults.
    /// @param sensor a member of the scenario
    /// @param error inserted into that member
    std::string perimeter(const char* sensor, const nlohmann::json& error) {
        auto scenario = nlohmann::json::parse(
            slurp(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/perimeter.json"));
        scenario["videoSensor"].erase("outages");
        scenario[sensor].update(error);
        spill(directory / "scene.json", scenario.dump());
        std::string path = directory / "perimeter.jsonl";
        EXPECT_EQ(veskar({"simulate", directory / "scene.json", "--duration", "300", "--seed", "31",
                          "-o", path})
                      .status,
                  0);
        return path;
    }

    VeskarTest::TemporaryDirectory directory;
};

TEST_F(Judgement, ReplayNamesAWordOutsideTheVocabularyOnce) {
    const std::string path = recording();
    std::string text = slurp(path);
    std::string::size_type place = 0;
    while ((place = text.find("\"class\":\"human\"", place)) != std::string::npos) {
        text.replace(place, 15, "\"class\":\"person\"");
    }
    spill(directory / "words.jsonl", text);
    const Outcome outcome =
        veskar({"replay", directory / "words.jsonl", "-o", directory / "fused"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "veskar: warning: " + (directory / "words.jsonl") +
                                  ": class \"person\" is none of the classes that are known; "
                                  "write \"human\"\n");
    EXPECT_THAT(veskar({"replay", path, "-o", directory / "fused"}).errors, IsEmpty());
}

TEST_F(Judgement, SimulateNamesAWordOutsideTheVocabularyOnce) {
    const std::string path = directory / "words.json";
    std::string text = slurp(std::string(VESKAR_SOURCE_DIR) + "/config/scenarios/perimeter.json");
    for (std::size_t place = 0; (place = text.find("\"human\"", place)) != std::string::npos;) {
        text.replace(place, 7, "\"humann\"");
    }
    spill(path, text);
    const Outcome outcome =
        veskar({"simulate", path, "--duration", "1", "-o", directory / "recording"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "veskar: warning: " + path +
                                  ": class \"humann\" is none of the classes that are known; is "
                                  "\"human\" meant?\n");
    EXPECT_THAT(veskar({"check", path}).output,
                HasSubstr("class is \"humann\": none of the classes that are known; is \"human\" "
                          "meant?\n"));
}

TEST_F(Judgement, CheckGivesConventionsAndEveryEstimateAsNumbers) {
    const std::string path = perimeter("radarSensor", {{"timestampError", 0.15}});
    const auto json = nlohmann::json::parse(veskar({"check", path, "--format", "json"}).output);
    EXPECT_TRUE(json["conventions"].empty());
    for (const char* key : {"yawRadians", "pitchRadians", "heightMetres", "lagSeconds"}) {
        const auto& estimate = json["installation"][key];
        EXPECT_TRUE(estimate["value"].is_number()) << key;
        EXPECT_GT(estimate["std"].get<double>(), 0.0) << key;
    }
    EXPECT_NEAR(json["installation"]["lagSeconds"]["value"].get<double>(), 0.15, 0.04);

    std::string text = slurp(path);
    const std::size_t end = text.find('\n');
    auto header = nlohmann::json::parse(text.substr(0, end));
    header["camera"]["rotation"]["pitch"] = 0.349;
    spill(directory / "radians.jsonl", text.replace(0, end, header.dump()));
    const auto other = nlohmann::json::parse(
        veskar({"check", directory / "radians.jsonl", "--format", "json"}).output);
    ASSERT_EQ(other["conventions"].size(), 1U);
    EXPECT_EQ(other["conventions"][0]["name"], "camera-angles-radians");
    EXPECT_EQ(other["conventions"][0]["key"], "camera.rotation");
    EXPECT_FALSE(other.contains("installation"));
}

TEST_F(Judgement, HelpShowsAnExample) {
    for (const char* command : {"evaluate", "check"}) {
        const Outcome outcome = veskar({command, "--help"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, HasSubstr("Example:\n  veskar "));
    }
}

TEST_F(Judgement, EvaluateTabulatesFusionAndSensors) {
    const Outcome outcome = veskar({"evaluate", recording()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    for (const char* word : {"fusion", "radar 3", "radar 15", "video 8", "GOSPA [m]", "MOTA",
                             "IDF1", "HOTA", "delay to confirmation", "NEES", "20 to 40 m"}) {
        EXPECT_THAT(outcome.output, HasSubstr(word));
    }
}

TEST_F(Judgement, EvaluateTellsMomentsAndObjects) {
    const std::string path = recording();
    const std::string moments = directory / "moments.json";
    const std::string objects = directory / "objects.csv";
    const Outcome outcome =
        veskar({"evaluate", path, "--format", "json", "--moments", moments, "--objects", objects});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, veskar({"evaluate", path, "--format", "json"}).output);
    const auto report = nlohmann::json::parse(outcome.output);
    double sum = 0.0;
    int count = 0;
    for (const auto& row : nlohmann::json::parse(slurp(moments))) {
        if (row["tracker"] == "fusion") {
            sum += row["GOSPA"].get<double>();
            ++count;
        }
    }
    EXPECT_EQ(count, report["instants"]);
    EXPECT_NEAR(sum / count, report["parts"]["all"]["fusion"]["GOSPA"], 1e-9);
    EXPECT_THAT(slurp(objects), testing::StartsWith("tracker,object,moments,matched,"));
    EXPECT_THAT(slurp(objects), HasSubstr("\nfusion,1,"));
    const Outcome clash = veskar({"evaluate", path, "-o", moments, "--objects", moments});
    EXPECT_EQ(clash.status, 2);
}

TEST_F(Judgement, EvaluateWritesJsonForMachines) {
    const std::string path = recording();
    const Outcome outcome = veskar({"evaluate", path, "--format", "json", "--hits", "2"});
    ASSERT_EQ(outcome.status, 0);
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json["truth"], "complete");
    const auto& all = json["parts"]["all"];
    EXPECT_EQ(all.size(), 3U);
    for (const char* tracker : {"fusion", "radar 2", "video 2"}) {
        EXPECT_TRUE(all[tracker]["GOSPA"].is_number()) << tracker;
        EXPECT_GE(all[tracker]["GOSPA"].get<double>(), 0.0);
        EXPECT_LE(all[tracker]["MOTA"].get<double>(), 1.0);
    }
    // The components of the mean power sum up to it, and the mean is not above the root mean
    // square.
    const auto& fusion = all["fusion"];
    const auto square = [&](const char* key) {
        return fusion[key].get<double>() * fusion[key].get<double>();
    };
    EXPECT_NEAR(square("GOSPA_localisation") + square("GOSPA_missed") + square("GOSPA_false"),
                square("GOSPA_rms"), 1e-9);
    EXPECT_LE(fusion["GOSPA"].get<double>(), fusion["GOSPA_rms"].get<double>());
    EXPECT_EQ(outcome.output, veskar({"evaluate", path, "--format", "json", "--hits", "2"}).output);
}

TEST_F(Judgement, EvaluateJudgesNothingTwice) {
    const std::string path = recording();
    const auto run = [&](const std::vector<std::string>& wishes) {
        std::vector<std::string> arguments{"evaluate", path, "--format", "json"};
        arguments.insert(arguments.end(), wishes.begin(), wishes.end());
        const Outcome outcome = veskar(arguments);
        EXPECT_EQ(outcome.status, 0);
        return outcome.output;
    };
    const std::string once = run({"--hits", "3", "8", "--bands", "0", "20"});
    EXPECT_EQ(run({"--hits", "8", "3", "8", "--bands", "0", "20"}), once);
    EXPECT_THAT(once, HasSubstr("\"20 m and more\""));
}

TEST_F(Judgement, EvaluateJudgesFusedTracksFromAFileAsThoseOfARun) {
    const std::string path = recording();
    const std::string fused = directory / "fused.jsonl";
    ASSERT_EQ(veskar({"replay", path, "-o", fused}).status, 0);
    const auto run = nlohmann::json::parse(veskar({"evaluate", path, "--format", "json"}).output);
    const Outcome outcome = veskar({"evaluate", path, fused, "--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    const auto file = nlohmann::json::parse(outcome.output);
    int compared = 0;
    for (const auto& part : run["parts"].items()) {
        for (const auto& tracker : part.value().items()) {
            for (const auto& figure : tracker.value().items()) {
                const auto& other = file["parts"][part.key()][tracker.key()][figure.key()];
                ASSERT_EQ(other.is_null(), figure.value().is_null()) << figure.key();
                if (figure.value().is_number()) {
                    // The file has three to six decimals of metres and radians.
                    EXPECT_NEAR(other.get<double>(), figure.value().get<double>(), 5e-3)
                        << part.key() << " " << tracker.key() << " " << figure.key();
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 500);
    EXPECT_EQ(veskar({"evaluate", path, "-", "--format", "json"}, slurp(fused)).output,
              outcome.output);
}

TEST_F(Judgement, EvaluateComparesRunsSideBySide) {
    const std::string path = recording();
    const std::string first = directory / "first.jsonl";
    const std::string second = directory / "second.jsonl";
    ASSERT_EQ(veskar({"replay", path, "-o", first}).status, 0);
    ASSERT_EQ(
        veskar({"replay", path, "-o", second, "--set", "veskarModule.positionGatingDistance=1.0"})
            .status,
        0);
    const std::string moments = directory / "moments.json";
    const Outcome outcome =
        veskar({"evaluate", path, first, second, first, "--format", "json", "--moments", moments});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const auto judged = nlohmann::json::parse(outcome.output);
    const auto alone = [&](const std::string& run) {
        return nlohmann::json::parse(veskar({"evaluate", path, run, "--format", "json"}).output);
    };
    const auto ofFirst = alone(first);
    const auto ofSecond = alone(second);
    EXPECT_NE(ofFirst["parts"]["all"]["fusion"], ofSecond["parts"]["all"]["fusion"]);
    EXPECT_EQ(judged["parts"].size(), ofFirst["parts"].size());
    for (const auto& part : judged["parts"].items()) {
        const auto& trackers = part.value();
        EXPECT_EQ(trackers.size(), 9U) << "three runs, and each sensor once";
        EXPECT_EQ(trackers["run 1"], ofFirst["parts"][part.key()]["fusion"]) << part.key();
        EXPECT_EQ(trackers["run 2"], ofSecond["parts"][part.key()]["fusion"]) << part.key();
        EXPECT_EQ(trackers["run 3"], trackers["run 1"]);
        EXPECT_EQ(trackers["radar 3"], ofSecond["parts"][part.key()]["radar 3"]);
    }
    std::set<std::string> told;
    for (const auto& row : nlohmann::json::parse(slurp(moments))) {
        told.insert(row["tracker"]);
    }
    EXPECT_THAT(told, testing::IsSupersetOf({"run 1", "run 2", "run 3", "radar 3"}));
    const std::string table = veskar({"evaluate", path, first, second}).output;
    EXPECT_THAT(table, HasSubstr("     run 1     run 2   radar 3"));
}

TEST_F(Judgement, EvaluateRefusesRunsThatSeeOtherObjects) {
    const std::string path = recording();
    const std::string text = slurp(path);
    auto camera = nlohmann::json::parse(text.substr(0, text.find('\n')))["camera"];
    camera["rotation"]["yaw"] = 20.0;
    spill(directory / "camera.json", camera.dump());
    const std::string first = directory / "first.jsonl";
    const std::string turned = directory / "turned.jsonl";
    ASSERT_EQ(veskar({"replay", path, "-o", first}).status, 0);
    ASSERT_EQ(veskar({"replay", path, "--camera", directory / "camera.json", "-o", turned}).status,
              0);
    EXPECT_EQ(veskar({"evaluate", path, turned}).status, 0);
    const Outcome outcome = veskar({"evaluate", path, first, turned});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: " + turned +
                                  ": the run has another camera or radar than the first one, so "
                                  "that other objects count: judge it by itself\n");
}

TEST_F(Judgement, EvaluateTellsMeanAndSpreadOverRecordings) {
    const std::string first = recording();
    const std::string second = directory / "second.jsonl";
    ASSERT_EQ(
        veskar({"simulate", dataFile("tiny.scenario.json"), "--seed", "9", "-o", second}).status,
        0);
    const auto gospaOf = [&](const std::string& path) {
        const auto json =
            nlohmann::json::parse(veskar({"evaluate", path, "--format", "json"}).output);
        return json["parts"]["all"]["fusion"]["GOSPA"].get<double>();
    };
    const Outcome outcome = veskar({"evaluate", first, second, "--format", "json"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const auto json = nlohmann::json::parse(outcome.output);
    const double one = gospaOf(first);
    const double other = gospaOf(second);
    EXPECT_NE(one, other);
    const auto& gospa = json["over"]["fusion"]["GOSPA"];
    EXPECT_NEAR(gospa["mean"].get<double>(), (one + other) / 2.0, 1e-12);
    EXPECT_NEAR(gospa["std"].get<double>(), std::abs(one - other) / std::sqrt(2.0), 1e-12);
    EXPECT_EQ(gospa["recordings"], 2);
    EXPECT_EQ(json["recordings"][1]["parts"]["all"]["fusion"]["GOSPA"], other);

    // Runs of each are compared by their places.
    const std::string runOfFirst = directory / "first.fused.jsonl";
    const std::string runOfSecond = directory / "second.fused.jsonl";
    ASSERT_EQ(veskar({"replay", first, "-o", runOfFirst}).status, 0);
    ASSERT_EQ(veskar({"replay", second, "-o", runOfSecond}).status, 0);
    const auto ofRuns = nlohmann::json::parse(
        veskar({"evaluate", first, runOfFirst, second, runOfSecond, "--format", "json"}).output);
    EXPECT_NEAR(ofRuns["over"]["fusion"]["GOSPA"]["mean"], gospa["mean"], 5e-3);
    EXPECT_THAT(veskar({"evaluate", first, runOfSecond, second, runOfFirst}).errors,
                HasSubstr("another recording"));

    const std::string table = veskar({"evaluate", first, second}).output;
    EXPECT_THAT(table, HasSubstr("\n2 recordings\n\nmean (standard deviation)"));
    const Outcome csv = veskar({"evaluate", first, second, "--format", "csv"});
    EXPECT_THAT(csv.output, testing::StartsWith("tracker,recording,part,metric,value\n"
                                                "fusion,tiny,all,GOSPA,"));
}

TEST_F(Judgement, EvaluateRefusesOptionsThatDoNotGoTogether) {
    const std::string path = recording();
    const std::string fused = directory / "fused.jsonl";
    ASSERT_EQ(veskar({"replay", path, "-o", fused}).status, 0);
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{path, fused, "--set", "veskarModule.useJVA=true"},
         "--config, --set and --camera are for the fusion; fused tracks state what they were made "
         "with"},
        {{path, "--force"}, "--force is for fused tracks"},
        {{path, path, "--moments", directory / "moments.csv"},
         "--moments and --objects are of one recording"},
    };
    for (const auto& [words, fault] : cases) {
        std::vector<std::string> command{"evaluate"};
        command.insert(command.end(), words.begin(), words.end());
        const Outcome outcome = veskar(command);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, std::string("veskar: evaluate: ") + fault + "\n");
    }
    EXPECT_THAT(directory.names(), testing::ElementsAre("fused.jsonl", "tiny.jsonl"));
}

TEST_F(Judgement, EvaluateJudgesTheVeryTracksOfTheFile) {
    const std::string path = recording();
    auto config =
        nlohmann::json::parse(slurp(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json"));
    config["veskarModule"]["systemTrackConfirmationLimitUpper"] = 2.0;
    config["veskarModule"]["systemTrackConfirmationLimitLower"] = 2.0;
    spill(directory / "strict.json", config.dump());
    ASSERT_EQ(
        veskar({"replay", path, "--config", directory / "strict.json", "-o", directory / "fused"})
            .status,
        0);
    const auto json = nlohmann::json::parse(
        veskar({"evaluate", path, directory / "fused", "--format", "json"}).output);
    EXPECT_EQ(json["parts"]["all"]["fusion"]["IDR"], 0.0);
    EXPECT_GT(json["parts"]["all"]["radar 3"]["IDR"].get<double>(), 0.0);
}

TEST_F(Judgement, AnExcerptIsReplayedAndJudgedAsARecording) {
    const std::string whole = recording();
    const std::string fused = directory / "fused.jsonl";
    ASSERT_EQ(veskar({"replay", whole, "--start", "1", "--end", "3", "-o", fused}).status, 0);
    const Outcome same = veskar({"evaluate", whole, fused, "--start", "1", "--end", "3"});
    EXPECT_EQ(same.status, 0) << same.errors;
    EXPECT_THAT(same.output, HasSubstr(" 20 moments of truth"));
    // A run that has been in a file differs in the last digits.
    const auto upToGospa = [](const std::string& text) {
        return text.substr(0, text.find("GOSPA, root mean square"));
    };
    EXPECT_EQ(upToGospa(same.output),
              upToGospa(veskar({"evaluate", whole, "--start", "1", "--end", "3"}).output));
    EXPECT_NE(upToGospa(same.output), upToGospa(veskar({"evaluate", whole}).output));
    // Tracks of an excerpt are none of the whole recording, nor of another excerpt.
    EXPECT_THAT(veskar({"evaluate", whole, fused}).errors, HasSubstr("another recording"));
    EXPECT_EQ(veskar({"evaluate", whole, fused, "--start", "1", "--end", "3.5"}).status, 2);
    EXPECT_EQ(veskar({"replay", whole, "--start", "0", "-o", "-"}).output,
              veskar({"replay", whole, "-o", "-"}).output);
}

TEST_F(Judgement, AnExcerptWithoutFramesIsRefused) {
    const std::string whole = recording();
    const Outcome none = veskar({"replay", whole, "--start", "1000"});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.errors, "veskar: " + whole + ": no sensor frame in the excerpt\n");
    EXPECT_EQ(veskar({"evaluate", whole, "--start", "2", "--end", "1"}).status, 2);
    EXPECT_EQ(veskar({"replay", whole, "--start", "-1"}).status, 2);
    EXPECT_EQ(veskar({"replay", whole, "--end", "nan"}).status, 2);
}

TEST_F(Judgement, EvaluateRefusesFusedTracksThatAreNone) {
    const std::string path = recording();
    const std::string fused = veskar({"replay", path}).output;
    const auto errorsOf = [&](const std::string& text) {
        const Outcome outcome = veskar({"evaluate", path, "-", "-o", directory / "report"}, text);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_THAT(directory.names(), testing::Not(testing::Contains("report")));
        return outcome.errors;
    };
    EXPECT_THAT(errorsOf(slurp(path)), HasSubstr("<stdin>:1: format: "));
    EXPECT_THAT(errorsOf(""), HasSubstr("<stdin>:1: the file is empty"));
    EXPECT_THAT(errorsOf(fused.substr(0, fused.size() - 9)), HasSubstr("the line is cut off"));
    std::string refused = fused;
    refused.replace(refused.find("\"useJVA\":true"), 13, "\"useJVA\":1");
    EXPECT_THAT(errorsOf(refused), HasSubstr("<stdin>:1: configuration: the fusion refuses it"));
    std::string other = fused;
    other.replace(other.find("\"tiny\""), 6, "\"tall\"");
    EXPECT_THAT(
        errorsOf(other),
        HasSubstr("<stdin>:1: name: these tracks are of the recording \"tall\", not of \"tiny\""));
    // The installation and configuration stated in the file cannot be overridden.
    spill(directory / "fused", fused);
    for (const char* option : {"--config", "--camera"}) {
        EXPECT_EQ(veskar({"evaluate", path, directory / "fused", option, "x"}).status, 2);
    }
    EXPECT_EQ(veskar({"evaluate", "-", "-"}, fused).status, 2);
}

TEST_F(Judgement, EvaluateOmitsWhatIncompleteTruthCannotTell) {
    const std::string path = withTruth(recording(), "incomplete");
    const Outcome table = veskar({"evaluate", path});
    EXPECT_EQ(table.status, 0);
    EXPECT_THAT(table.output, HasSubstr("leaves objects out"));
    const auto json = nlohmann::json::parse(veskar({"evaluate", path, "--format", "json"}).output);
    const auto& fusion = json["parts"]["all"]["fusion"];
    for (const char* key :
         {"GOSPA", "GOSPA_false", "OSPA", "MOTA", "IDF1", "IDP", "HOTA", "DetA", "spuriousness"}) {
        EXPECT_TRUE(fusion[key].is_null()) << key;
    }
    for (const char* key :
         {"GOSPA_missed", "IDSW", "IDR", "completeness", "position_rmse", "tracks_per_object"}) {
        EXPECT_TRUE(fusion[key].is_number()) << key;
    }
}

TEST_F(Judgement, EvaluateRefusesARecordingWithoutTruth) {
    const Outcome outcome = veskar({"evaluate", withTruth(recording(), "none")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("no truth"));
    EXPECT_THAT(outcome.output, IsEmpty());
}

TEST_F(Judgement, EvaluateLeavesNoReportOfABrokenRecording) {
    std::string text = slurp(recording());
    text.resize(text.size() / 2);
    spill(directory / "cut.jsonl", text);
    const Outcome outcome =
        veskar({"evaluate", directory / "cut.jsonl", "-o", directory / "report"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("cut.jsonl:"));
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"cut.jsonl", "tiny.jsonl"}));
}

TEST_F(Judgement, CheckAnswersByItsExitStatus) {
    const std::string config = std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json";
    EXPECT_EQ(veskar({"check", config}).status, 0);
    spill(directory / "bad.json", "{\"veskarModule\": {}}");
    const Outcome faulty = veskar({"check", directory / "bad.json"});
    EXPECT_EQ(faulty.status, 1);
    EXPECT_THAT(faulty.output, HasSubstr("bad.json:1: fault: veskarInputs: missing"));
    EXPECT_THAT(faulty.output, HasSubstr("fault: veskarModule.useJVA: missing"));
    const Outcome missing = veskar({"check", directory / "nowhere.json"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(missing.errors, HasSubstr("nowhere.json"));
    EXPECT_EQ(veskar({"check", "-"}, "{}").status, 2) << "standard input needs --as";
    EXPECT_EQ(veskar({"check", "-", "--as", "camera"}, "{}").status, 1);
}

TEST_F(Judgement, CheckWritesJsonForMachines) {
    const Outcome outcome = veskar({"check", recording(), "--format", "json"});
    EXPECT_EQ(outcome.status, 0);
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json["faults"], 0);
    EXPECT_FALSE(json["findings"].empty());
    for (const auto& finding : json["findings"]) {
        EXPECT_TRUE(finding["severity"] == "note" || finding["severity"] == "warning");
        EXPECT_FALSE(finding["message"].get<std::string>().empty());
    }
}

/// A deviation from the stated installation, in five minutes with three walkers, and the finding
/// that a check of the recording must report.
struct WrongInstallation {
    const char* sensor;    ///< member of the scenario
    nlohmann::json error;  ///< inserted into that member
    const char* key;       ///< of the finding
    const char* member;    ///< of the estimate in JSON
    double value;          ///< in the unit of the member
    const char* remedy;    ///< beginning of the corrected value
};

/// The name in test reports, which must not depend on addresses.
std::ostream& operator<<(std::ostream& stream, const WrongInstallation& wrong) {
    return stream << wrong.key;
}

class WrongInstallationTest : public Judgement,
                              public testing::WithParamInterface<WrongInstallation> {};

TEST_P(WrongInstallationTest, CheckFindsItAndSaysWhatToSet) {
    const WrongInstallation& wrong = GetParam();
    const Outcome outcome =
        veskar({"check", perimeter(wrong.sensor, wrong.error), "--format", "json"});
    EXPECT_EQ(outcome.status, 0) << "suspicious, but no fault";
    const auto json = nlohmann::json::parse(outcome.output);
    std::vector<std::string> warnedOf;
    for (const auto& finding : json["findings"]) {
        if (finding["severity"] == "warning") {
            warnedOf.push_back(finding["key"]);
            EXPECT_THAT(finding["message"].get<std::string>(), HasSubstr(wrong.remedy));
        }
    }
    EXPECT_THAT(warnedOf, testing::ElementsAre(wrong.key));
    const auto& estimate = json["installation"][wrong.member];
    EXPECT_NEAR(estimate["value"].get<double>(), wrong.value, 0.2 * wrong.value);
    EXPECT_LT(estimate["std"].get<double>(), 0.2 * wrong.value);
}

INSTANTIATE_TEST_SUITE_P(EachError, WrongInstallationTest,
                         testing::Values(WrongInstallation{"videoSensor",
                                                           {{"mountingError", {{"yaw", 2.0}}}},
                                                           "yaw",
                                                           "yawRadians",
                                                           0.0349,
                                                           "set camera.rotation.yaw to 2."},
                                         WrongInstallation{"videoSensor",
                                                           {{"mountingError", {{"height", 0.5}}}},
                                                           "height",
                                                           "heightMetres",
                                                           0.5,
                                                           "set camera.position[2] to 5."},
                                         WrongInstallation{"radarSensor",
                                                           {{"timestampError", 0.15}},
                                                           "lag",
                                                           "lagSeconds",
                                                           0.15,
                                                           "; subtract 0.1"}),
                         [](const auto& instance) { return std::string(instance.param.key); });

TEST_F(Judgement, CheckRaisesNoAlarmOnAnInstallationThatIsAsStated) {
    const Outcome outcome = veskar({"check", perimeter("videoSensor", nlohmann::json::object())});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("perimeter.jsonl: 0 faults, 0 warnings\n"));
    for (const char* key :
         {": note: video: ", ": note: radar: ", ": note: yaw: off by ", ": note: height: off by ",
          ": note: pitch: off by ", ": note: lag: off by "}) {
        EXPECT_THAT(outcome.output, HasSubstr(key));
    }
}

TEST_F(Judgement, CheckFindsNoFaultInWhatTheProgramWrites) {
    for (const char* name : {"tiny.jsonl", "kitti.jsonl", "boats.jsonl"}) {
        const Outcome outcome = veskar({"check", dataFile(name)});
        EXPECT_EQ(outcome.status, 0) << outcome.output;
        EXPECT_THAT(outcome.output, HasSubstr(" 0 faults, "));
    }
}

TEST_F(Judgement, CheckSurvivesBinaryGarbage) {
    std::string garbage;
    for (int i = 0; i < 5000; ++i) {
        garbage += static_cast<char>((i * 7919) % 256);
    }
    spill(directory / "garbage", garbage);
    for (const char* kind : {"configuration", "camera", "scenario", "recording"}) {
        const Outcome outcome = veskar({"check", directory / "garbage", "--as", kind});
        EXPECT_EQ(outcome.status, 1) << kind;
        EXPECT_THAT(outcome.output, HasSubstr("garbage:1: fault: ")) << kind;
    }
}

TEST_F(Judgement, ExplainTellsWhyEveryPairWasOrWasNotFused) {
    const std::string path = recording();
    const std::string plain = veskar({"replay", path}).output;
    const Outcome outcome = veskar({"replay", path, "--explain", directory / "why.jsonl"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, plain) << "explaining changes nothing";
    std::istringstream lines(slurp(directory / "why.jsonl"));
    std::string line;
    std::set<std::string> outcomes;
    int starts = 0;
    int confirmations = 0;
    while (std::getline(lines, line) && line.find("\"digests\"") == std::string::npos) {
        const auto frame = nlohmann::json::parse(line);
        EXPECT_TRUE(frame["time"].is_number());
        for (const auto& candidate : frame.value("candidates", nlohmann::json::array())) {
            EXPECT_TRUE(candidate["limit"].is_number());
            EXPECT_TRUE(candidate["gate"].is_string());
            EXPECT_TRUE(candidate["class"].is_string());
            outcomes.insert(candidate["outcome"]);
        }
        starts += static_cast<int>(frame.value("starts", nlohmann::json::array()).size());
        confirmations +=
            static_cast<int>(frame.value("confirmations", nlohmann::json::array()).size());
    }
    EXPECT_THAT(outcomes, testing::Contains("assigned"));
    EXPECT_GT(starts, 0);
    EXPECT_GT(confirmations, 0);
    EXPECT_LE(confirmations, starts);
}

}  // namespace
