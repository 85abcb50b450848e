// SPDX-License-Identifier: Apache-2.0
#include "evaluate/MomentTables.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Workbench::Gospa;
using Workbench::TableForm;

namespace {

class MomentTables : public testing::Test {
protected:
    MomentTables() {
        header.truth = Workbench::TruthKind::Complete;
        Gospa gospa;
        gospa.distance = 2.5;
        gospa.localisationCost = 0.25;
        gospa.matched = 1;
        gospa.missed = 2;
        gospa.falseTracks = 3;
        overTime = {{"fusion",
                     {{1.5, gospa, {{7, 1}}, {7, 8}},
                      {2.5, gospa, {{7, 1}}, {7, 8}},
                      {3.5, gospa, {}, {7, 8}},
                      {4.5, gospa, {{7, 2}}, {7}}}},
                    {"radar 3", {{1.5, gospa, {}, {7}}}}};
    }

    Workbench::RecordingHeader header;
    std::vector<Workbench::GospaSeries> overTime;
};

TEST_F(MomentTables, HaveARowPerTrackerAndMoment) {
    overTime[0].moments.resize(1);
    header.epoch = 1777636800.0;
    EXPECT_EQ(momentTable(header, overTime, TableForm::Csv),
              "tracker,time,utc,GOSPA,localisationCost,matched,missed,false\n"
              "fusion,1.5,2026-05-01T12:00:01.500000Z,2.5,0.25,1,2,3\n"
              "radar 3,1.5,2026-05-01T12:00:01.500000Z,2.5,0.25,1,2,3\n");
}

TEST_F(MomentTables, LeaveOutWhatAnIncompleteTruthCannotTell) {
    overTime.resize(1);
    overTime[0].moments.resize(1);
    header.truth = Workbench::TruthKind::Incomplete;
    EXPECT_EQ(momentTable(header, overTime, TableForm::Csv),
              "tracker,time,utc,GOSPA,localisationCost,matched,missed,false\n"
              "fusion,1.5,,,0.25,1,2,\n");
    EXPECT_EQ(json::parse(momentTable(header, overTime, TableForm::JsonArray)), json::parse(R"([
        {"tracker":"fusion","time":1.5,"utc":null,"GOSPA":null,"localisationCost":0.25,"matched":1,
         "missed":2,"false":null}])"));
}

TEST_F(MomentTables, TellWhatBecameOfEveryObject) {
    EXPECT_EQ(objectTable(overTime, TableForm::Csv),
              "tracker,object,moments,matched,tracks,changes,first,last\n"
              "fusion,7,4,3,2,1,1.5,4.5\n"
              "fusion,8,3,0,0,0,,\n"
              "radar 3,7,1,0,0,0,,\n");
}

TEST_F(MomentTables, HaveTheFormOfTheirName) {
    EXPECT_EQ(Workbench::formOf("a.json"), TableForm::JsonArray);
    EXPECT_EQ(Workbench::formOf("a.json.gz"), TableForm::JsonArray);
    EXPECT_EQ(Workbench::formOf("a.json.zst"), TableForm::JsonArray);
    EXPECT_EQ(Workbench::formOf("json"), TableForm::Csv);
    EXPECT_EQ(Workbench::formOf("a.csv.gz"), TableForm::Csv);
}

}  // namespace
