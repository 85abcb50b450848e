// SPDX-License-Identifier: Apache-2.0
// Recordings as ONVIF scene descriptions, and logs of those as recordings.
#include "Process.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

std::vector<json> linesOf(const std::string& text) {
    std::vector<json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(json::parse(line));
    }
    return lines;
}

class Onvif : public testing::Test {
protected:
    std::string exported(const std::string& format, const std::vector<std::string>& words) const {
        std::vector<std::string> command{"export", recording, "--to", format};
        command.insert(command.end(), words.begin(), words.end());
        const Outcome outcome = veskar(command);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return outcome.output;
    }

    Outcome import(std::vector<std::string> words, const std::string& input = "") const {
        words.insert(words.begin(), {"import", "onvif"});
        words.insert(words.end(), {"--installation", recording});
        return veskar(words, input);
    }

    /// The frames of a sensor: ids by time.
    static std::map<double, std::set<int>> idsIn(const std::string& text,
                                                 const std::string& source) {
        std::map<double, std::set<int>> ids;
        for (const json& line : linesOf(text)) {
            if (line.value("source", "") == source) {
                std::set<int>& ofFrame = ids[line["time"]];
                for (const json& track : line["tracks"]) {
                    ofFrame.insert(track["id"].get<int>());
                }
            }
        }
        return ids;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string recording = dataFile("tiny.jsonl");
};

TEST_F(Onvif, ReportsThatWereOnvifAreTheSame) {
    for (const char* format : {"onvif-xml", "onvif-json"}) {
        const std::string log = exported(format, {"--layer", "video", "--layer", "radar"});
        const Outcome outcome = import({"-"}, log);
        ASSERT_EQ(outcome.status, 0) << outcome.errors;
        std::map<std::string, std::map<double, json>> frames;
        for (const json& line : linesOf(outcome.output)) {
            if (line.contains("source")) {
                frames[line["source"]][line["time"]] = line["tracks"];
            }
        }
        std::size_t compared = 0;
        for (const json& line : linesOf(slurp(recording))) {
            if (!line.contains("source") || line["source"] == "truth") {
                continue;
            }
            const std::string source = line["source"];
            ASSERT_EQ(frames[source].count(line["time"]), 1U) << source << " " << line["time"];
            const json& tracks = frames[source][line["time"]];
            for (const json& report : line["tracks"]) {
                // Ids are given anew, in the order of the objects.
                const auto same = [&](const json& other) {
                    if (source == "radar") {
                        return std::abs(other["range"].get<double>() -
                                        report["range"].get<double>()) < 1e-3 &&
                               std::abs(other["azimuth"].get<double>() -
                                        report["azimuth"].get<double>()) < 1e-3;
                    }
                    for (const char* side : {"left", "bottom", "right", "top"}) {
                        if (std::abs(other["box"][side].get<double>() -
                                     report["box"][side].get<double>()) > 1e-4) {
                            return false;
                        }
                    }
                    return other.value("class", "unknown") == report.value("class", "unknown");
                };
                if (report.value("coasting", 0.0) == 0.0 && report.value("confirmed", true)) {
                    EXPECT_EQ(std::count_if(tracks.begin(), tracks.end(), same), 1)
                        << report << "\n"
                        << tracks;
                    ++compared;
                }
            }
        }
        EXPECT_GT(compared, 50U);
    }
}

TEST_F(Onvif, XmlAndJsonSayTheSame) {
    const std::vector<std::string> layers{"--layer", "video", "--layer", "radar"};
    EXPECT_EQ(import({"-"}, exported("onvif-xml", layers)).output,
              import({"-"}, exported("onvif-json", layers)).output);
}

TEST_F(Onvif, LogsOfTwoDevicesAreOrderedByTime) {
    spill(directory / "video", exported("onvif-xml", {"--layer", "video"}));
    spill(directory / "radar", exported("onvif-json", {"--layer", "radar"}));
    const Outcome apart = import({directory / "video", directory / "radar"});
    EXPECT_EQ(apart.status, 0) << apart.errors;
    const std::string together =
        import({"-"}, exported("onvif-json", {"--layer", "video", "--layer", "radar"})).output;
    EXPECT_EQ(idsIn(apart.output, "radar"), idsIn(together, "radar"));
    EXPECT_EQ(idsIn(apart.output, "video"), idsIn(together, "video"));
    EXPECT_GT(idsIn(apart.output, "video").size(), 10U);
    EXPECT_EQ(veskar({"replay", "-"}, apart.output).status, 0);
}

TEST_F(Onvif, EachLayerIsAModule) {
    const std::string run = directory / "run.jsonl";
    ASSERT_EQ(veskar({"replay", recording, "-o", run}).status, 0);
    const Outcome outcome = veskar({"export", recording, run, "--to", "onvif-json"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    std::map<std::string, int> frames;
    for (const json& line : linesOf(outcome.output)) {
        ++frames[line["Frame"][0]["@Source"]];
    }
    EXPECT_EQ(frames.size(), 4U);
    EXPECT_EQ(frames["truth"], 41) << outcome.output.substr(0, 500);
    EXPECT_GT(frames["fused"], frames["radar"]);
    // Other modules than those of the sensors are left out by name.
    const Outcome back = import({"-", "--ignore", "truth", "--ignore", "fused"}, outcome.output);
    EXPECT_EQ(idsIn(back.output, "video").size(), static_cast<std::size_t>(frames["video"]));
    // Or one takes the place of the camera.
    const Outcome other = import(
        {"-", "--ignore", "truth", "--ignore", "video", "--ignore", "radar", "--video", "fused"},
        outcome.output);
    EXPECT_EQ(other.status, 0) << other.errors;
    EXPECT_THAT(idsIn(other.output, "radar"), IsEmpty());
    EXPECT_GT(idsIn(other.output, "video").size(), 10U);
}

TEST_F(Onvif, TimesAreThoseOfTheEpoch) {
    std::string text = slurp(recording);
    text.insert(text.find("\"truth\":\"complete\""), "\"epoch\":1777636800.25,");
    spill(directory / "dated.jsonl", text);
    const Outcome outcome =
        veskar({"export", directory / "dated.jsonl", "--to", "onvif-json", "--layer", "truth"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(linesOf(outcome.output)[0]["Frame"][0]["@UtcTime"], "2026-05-01T12:00:00.250000Z");
    const std::string log =
        veskar({"export", directory / "dated.jsonl", "--to", "onvif-xml", "--layer", "radar"})
            .output;
    const json header = linesOf(import({"-"}, log).output)[0];
    EXPECT_EQ(header["epoch"], 1777636800.0);
    EXPECT_EQ(header["origin"], "ONVIF scene descriptions");
}

TEST_F(Onvif, ADocumentMayHaveManyLinesAndManyFrames) {
    const std::string document = R"(<?xml version="1.0"?>
<tt:MetadataStream xmlns:tt="http://www.onvif.org/ver10/schema">
  <tt:VideoAnalytics>
    <tt:Frame UtcTime="2026-05-01T12:00:00.5Z"><tt:Object ObjectId="7"><tt:Appearance>
      <tt:Shape><tt:BoundingBox left="-0.1" bottom="-0.5" right="0.1" top="0.0"/>
      <tt:CenterOfGravity x="0" y="-0.25"/></tt:Shape></tt:Appearance></tt:Object></tt:Frame>
    <tt:Frame UtcTime="2026-05-01T12:00:00.6Z"/>
  </tt:VideoAnalytics>
</tt:MetadataStream>
)";
    const Outcome outcome = import({"-"}, document + "\n" + document);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::vector<json> lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1]["time"], 0.5);
    EXPECT_EQ(lines[1].value("received", 0.5), 0.5);
    EXPECT_EQ(lines[1]["tracks"].size(), 1U);
    EXPECT_EQ(lines[2]["time"], 0.6);
    EXPECT_THAT(outcome.errors, HasSubstr("2 frames left out: the sensor had one at that time\n"));
}

TEST_F(Onvif, WhatCannotBeReadIsNamed) {
    const std::string good = exported("onvif-json", {"--layer", "radar"});
    const std::string first = good.substr(0, good.find('\n') + 1);
    EXPECT_THAT(import({"-"}, first + "{\"Frame\":[{}]}\n").errors,
                StartsWith("veskar: <stdin>:2: Frame[0]"));
    EXPECT_THAT(import({"-"}, "<tt:MetadataStream><a>\n").errors,
                HasSubstr("<stdin>:1: an XML document breaks off"));
    EXPECT_EQ(import({"-"}, "\n\n").errors, "veskar: -: there is no frame of a sensor\n");
    EXPECT_EQ(import({"-"}, "neither\n").status, 2);
    EXPECT_EQ(veskar({"import", "onvif", "-", "--installation", directory / "none"}, good).status,
              2);
    std::string early = slurp(recording);
    early.insert(early.find("\"truth\":\"complete\""), "\"epoch\":-100,");
    const Outcome before = veskar({"export", "-", "--to", "onvif-json"}, early);
    EXPECT_EQ(before.status, 2);
    EXPECT_THAT(before.errors, HasSubstr("is no UTC after 1970"));
}

TEST_F(Onvif, FramesThatTellNoSensorAreCounted) {
    const Outcome outcome =
        import({"-"}, "{\"Frame\":[{\"@UtcTime\":\"2026-05-01T12:00:00Z\",\"@Source\":\"x\"}]}\n" +
                          exported("onvif-json", {"--layer", "radar"}));
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("1 frame of modules that no object tells as a camera or "
                                          "a radar: name them\n"));
}

}  // namespace
