// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/RadarReport.h>
#include <veskar-host/VideoReport.h>

#include "HostLibrary.h"
#include "Installation.h"
#include "Process.h"
#include "import/Csv.h"
#include "support/TemporaryDirectory.h"

#include <string>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using Workbench::ImportedRecording;
using Workbench::RadarReport;
using Workbench::VideoReport;

namespace {

class Csv : public testing::Test {
protected:
    void SetUp() override {
        Workbench::RecordingHeader header = VeskarTest::installation();
        header.name = "site";
        header.camera.resolution = {1000, 500};
        recipe["recording"] = json::parse(toJsonLine(header));
        recipe["recording"].erase("format");
        recipe["recording"].erase("version");
        recipe["radar"]["columns"] = {{"time", {{"column", "t"}, {"unit", "ms"}}},
                                      {"id", {{"column", "track"}}},
                                      {"range", {{"column", "r"}, {"unit", "ft"}}},
                                      {"azimuth", {{"column", "phi"}, {"unit", "rad"}}}};
        recipe["video"]["columns"] = {{"time", {{"column", "t"}, {"unit", "s"}}},
                                      {"id", {{"column", "id"}}},
                                      {"class", {{"column", "kind"}}},
                                      {"left", {{"column", "x"}, {"unit", "px"}}},
                                      {"top", {{"column", "y"}, {"unit", "px"}}},
                                      {"width", {{"column", "w"}, {"unit", "px"}}},
                                      {"height", {{"column", "h"}, {"unit", "px"}}}};
    }

    ImportedRecording imported(const std::string& radar, const std::string& video = "") {
        Workbench::CsvOptions options{directory / "recipe.json", "", ""};
        VeskarTest::spill(options.recipe, recipe.dump());
        if (!radar.empty()) {
            options.radar = directory / "radar.csv";
            VeskarTest::spill(options.radar, radar);
        }
        if (!video.empty()) {
            options.video = directory / "video.csv";
            VeskarTest::spill(options.video, video);
        }
        return Workbench::importCsv(options);
    }

    void expectFault(const std::string& radar, const std::string& fault) {
        try {
            imported(radar);
            ADD_FAILURE() << "accepts what should be refused: " << fault;
        } catch (const Workbench::InputError& error) {
            EXPECT_THAT(error.what(), EndsWith(fault));
        }
    }

    static const RadarReport& radarReport(const ImportedRecording& recording, std::size_t frame,
                                          std::size_t track) {
        return std::get<RadarReport>(recording.frames.at(frame).tracks.at(track));
    }

    VeskarTest::TemporaryDirectory directory;
    json recipe;
};

TEST_F(Csv, ColumnsAreFoundByNameAndConverted) {
    recipe["radar"]["columns"]["azimuth"]["negate"] = true;
    recipe["radar"]["columns"]["azimuth"]["offset"] = 1.5;
    const auto recording =
        imported("phi,other,t,r,track\r\n0.5,\"a, b\",1500,100,7\r\n0.25,,1500, 200 ,8\r\n");
    ASSERT_EQ(recording.frames.size(), 1);
    EXPECT_EQ(recording.frames[0].source, Veskar::Radar);
    EXPECT_EQ(recording.frames[0].time, 1.5);
    EXPECT_EQ(recording.frames[0].received, 1.5);
    EXPECT_EQ(radarReport(recording, 0, 0).id, 7);
    EXPECT_DOUBLE_EQ(radarReport(recording, 0, 0).range, 30.48);
    EXPECT_NEAR(radarReport(recording, 0, 0).azimuth, 1.5 - 28.6478897565, 1e-9);
    EXPECT_EQ(radarReport(recording, 0, 1).id, 8);
    EXPECT_EQ(recording.header.name, "site");
    EXPECT_THAT(recording.header.origin, Not(HasSubstr("tracker")));
}

TEST_F(Csv, PlacesBecomeRangeAndAzimuth) {
    auto& columns = recipe["radar"]["columns"];
    columns.erase("range");
    columns.erase("azimuth");
    columns["x"] = {{"column", "ahead"}, {"unit", "m"}};
    columns["y"] = {{"column", "left"}, {"unit", "m"}};
    columns["speed"] = {{"column", "v"}, {"unit", "km/h"}};
    const auto recording = imported("t,track,ahead,left,v\n0,1,30,-40,36\n");
    EXPECT_DOUBLE_EQ(radarReport(recording, 0, 0).range, 50.0);
    EXPECT_NEAR(radarReport(recording, 0, 0).azimuth, 53.1301023542, 1e-9);  // to the right
    EXPECT_DOUBLE_EQ(*radarReport(recording, 0, 0).speed, 10.0);
    EXPECT_FALSE(radarReport(recording, 0, 0).direction);
}

TEST_F(Csv, RowsWithoutReportAreEmptyFrames) {
    const auto recording = imported("t,track,r,phi\n0,,,\n100,1,10,0\n200,,,\n");
    ASSERT_EQ(recording.frames.size(), 3);
    EXPECT_THAT(recording.frames[0].tracks, IsEmpty());
    EXPECT_EQ(recording.frames[1].tracks.size(), 1);
    EXPECT_THAT(recording.frames[2].tracks, IsEmpty());
}

TEST_F(Csv, BoxesAreInTheImage) {
    const auto recording =
        imported("", "t,id,kind,x,y,w,h\n1,4,pedestrian,250,125,500,250\n3,4,zeppelin,0,0,10,10\n");
    ASSERT_EQ(recording.frames.size(), 2);
    const auto& report = std::get<VideoReport>(recording.frames[0].tracks.at(0));
    EXPECT_EQ(report.id, 4);
    EXPECT_DOUBLE_EQ(report.box.left, -0.5);
    EXPECT_DOUBLE_EQ(report.box.right, 0.5);
    EXPECT_DOUBLE_EQ(report.box.top, 0.5);
    EXPECT_DOUBLE_EQ(report.box.bottom, -0.5);
    EXPECT_EQ(report.labels.objectClass.name, "human");
    EXPECT_EQ(report.age, 0.0);
    EXPECT_EQ(std::get<VideoReport>(recording.frames[1].tracks.at(0)).age, 2.0);
    EXPECT_THAT(recording.warnings, ElementsAre(HasSubstr("zeppelin")));
}

TEST_F(Csv, BoxesMayBePartsOfTheImage) {
    auto& columns = recipe["video"]["columns"];
    for (const char* edge : {"left", "top", "width", "height"}) {
        columns[edge]["unit"] = "fraction";
    }
    const auto recording = imported("", "t,id,kind,x,y,w,h\n1,4,,0.25,0.25,0.5,0.5\n");
    const auto& report = std::get<VideoReport>(recording.frames[0].tracks.at(0));
    EXPECT_DOUBLE_EQ(report.box.left, -0.5);
    EXPECT_DOUBLE_EQ(report.box.bottom, -0.5);
    EXPECT_EQ(report.labels.objectClass.name, "unknown");
}

TEST_F(Csv, UnixTimesCountFromAnEpoch) {
    recipe["clock"] = "unix";
    recipe["radar"]["columns"]["received"] = {{"column", "at"}, {"unit", "s"}};
    const auto recording = imported("t,at,track,r,phi\n1777636800500,1777636800.75,1,10,0\n",
                                    "t,id,kind,x,y,w,h\n1777636802,4,,0,0,9,9\n");
    EXPECT_EQ(recording.header.epoch, 1777636800.0);
    EXPECT_EQ(recording.frames[0].time, 0.5);
    EXPECT_EQ(recording.frames[0].received, 0.75);
    EXPECT_EQ(recording.frames[1].time, 2.0);
}

TEST_F(Csv, WhatHasNoIdsIsTracked) {
    recipe["radar"]["columns"].erase("id");
    recipe["video"]["columns"].erase("id");
    std::string radar = "t,r,phi\n";
    std::string video = "t,kind,x,y,w,h\n";
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        radar += number + "00," + std::to_string(100 + i) + ",0\n";
        radar += number + "00," + std::to_string(300 - i) + ",0.5\n";
        video += std::to_string(0.1 * i) + ",car," + std::to_string(400 + i) + ",200,50,50\n";
    }
    const auto recording = imported(radar, video);
    EXPECT_THAT(recording.header.origin,
                HasSubstr("the tracks of the radar are those of veskar's"));
    EXPECT_THAT(recording.header.origin, HasSubstr("the tracks of the camera are those of"));
    ASSERT_EQ(recording.frames.size(), 40);
    const auto idsAt = [&](std::size_t frame) {
        std::vector<int> ids;
        for (const auto& report : recording.frames[frame].tracks) {
            ids.push_back(baseOf(report).id);
        }
        return ids;
    };
    EXPECT_EQ(idsAt(19).size(), 2);
    EXPECT_EQ(idsAt(19), idsAt(10));
    EXPECT_EQ(idsAt(39).size(), 1);
    EXPECT_EQ(idsAt(39), idsAt(30));
}

TEST_F(Csv, FaultsOfTablesHavePlaces) {
    const std::string head = "t,track,r,phi\n";
    expectFault("t,track,r\n", "radar.csv: no column \"phi\"");
    expectFault("t,t\n", "radar.csv:1: the column \"t\" occurs twice");
    expectFault(head, "there is no row in the tables");
    expectFault(head + "0,1,10\n", "radar.csv:2: 3 cells where the first line has 4");
    expectFault(head + "0,1,far,0\n", "radar.csv:2: \"far\" is no number");
    expectFault(head + "0,1,-1,0\n", "radar.csv:2: the range -0.3048 m is not above 0");
    expectFault(head + ",1,10,0\n", "radar.csv:2: no time");
    expectFault(head + "0,a7,10,0\n", "radar.csv:2: \"a7\" is no number");
    expectFault(head + "0,,10,0\n", "radar.csv:2: the id \"\" is no integer of 32 bits");
    expectFault(head + "0,3000000000,10,0\n",
                "radar.csv:2: the id \"3000000000\" is no integer of 32 bits");
    expectFault(head + "0,1,10,0\n0,1,11,0\n", "radar.csv:3: the id 1 occurs twice at one time");
    expectFault(head + "100,1,10,0\n0,1,11,0\n",
                "radar.csv:3: the time 0 is before that of the row above");
    expectFault(head + "0,\"1,10,0\n", "radar.csv:2: a quote is not closed");
}

TEST_F(Csv, FaultsOfRecipesNameTheMember) {
    const auto expectRecipeFault = [&](const json::json_pointer& place, const json& value,
                                       const std::string& fault) {
        const json before = recipe;
        recipe[place] = value;
        expectFault("t\n", "recipe.json: " + fault);
        recipe = before;
    };
    using Pointer = json::json_pointer;
    expectRecipeFault(Pointer("/clock"), "sun", "clock: \"sun\" is not own or unix");
    expectRecipeFault(Pointer("/radar/columns/range/unit"), "rad",
                      "radar.columns.range.unit: \"rad\" is not one of m, cm, km, ft");
    expectRecipeFault(Pointer("/radar/columns/left"), json{{"column", "x"}},
                      "radar.columns.left: is nothing that this sensor reports");
    expectRecipeFault(Pointer("/radar/separator"), "", "radar.separator: expected one character");
    expectRecipeFault(Pointer("/radar/columns/range"), nullptr,
                      "radar.columns: range or x is missing");
    expectRecipeFault(Pointer("/radar/columns/time"), nullptr, "radar.columns: time is missing");
    recipe.erase("radar");
    expectFault("t\n", "the recipe does not describe the radar");
}

}  // namespace
