// SPDX-License-Identifier: Apache-2.0
// Applies faults of conventions to simulated recordings and checks that they are identified.
// scripts/check-conventions does the same with all scenarios and more seeds.
#include "Process.h"
#include "check/ConventionErrors.h"

#include <algorithm>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::ConventionError;
using VeskarTest::conventionErrors;
using VeskarTest::namesOf;

class ConventionMistakes : public testing::Test {
protected:
    RecordingCheckResult checked(const VeskarTest::Recorded& recorded,
                                 const ConventionError& error) {
        write(recorded, error, directory / "recording");
        return checkRecording(directory / "recording", [](const Workbench::LineReader&) {});
    }
    RecordingCheckResult checked(const VeskarTest::Recorded& recorded, const char* what) {
        return checked(recorded, VeskarTest::conventionError(what));
    }

    /// Every fault except those that the scenario hides.
    void expectEveryMistakeNamed(const char* scenario, std::uint64_t seed,
                                 const std::set<std::string>& hidden = {}) {
        const VeskarTest::Recorded recorded = VeskarTest::simulated(scenario, seed, 0.0);
        for (const ConventionError& error : conventionErrors()) {
            if (hidden.count(error.what) > 0) {
                continue;
            }
            const auto names = namesOf(checked(recorded, error));
            if (error.expected.empty()) {
                EXPECT_THAT(names, IsEmpty()) << scenario;
            } else {
                EXPECT_THAT(names, Contains(error.expected)) << scenario << ": " << error.what;
            }
        }
    }

    static std::string textOf(const RecordingCheckResult& result) {
        std::string text;
        for (const Finding& finding : result.findings) {
            text += toText(finding, "recording") + "\n";
        }
        return text;
    }

    VeskarTest::TemporaryDirectory directory;
};

TEST_F(ConventionMistakes, AreNamedInThePerimeter) {
    expectEveryMistakeNamed("perimeter", 1);
}

TEST_F(ConventionMistakes, AreNamedOnTheRoad) {
    expectEveryMistakeNamed("road", 2);
}

TEST_F(ConventionMistakes, AreNamedAtTheCrossing) {
    expectEveryMistakeNamed("crossing", 3);
}

TEST_F(ConventionMistakes, AMistakeIsNamedAlone) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 2, 60.0);
    for (const ConventionError& error : conventionErrors()) {
        // Two faults have two names.
        if (error.what != "azimuth and direction mirrored") {
            EXPECT_THAT(namesOf(checked(recorded, error)), Each(error.expected)) << error.what;
        }
    }
}

TEST_F(ConventionMistakes, TwoMistakesAreNamedBoth) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 2, 60.0);
    EXPECT_THAT(namesOf(checked(recorded, "azimuth and direction mirrored")),
                testing::ElementsAre("azimuth-sign", "direction-sign"));
    ConventionError both = VeskarTest::conventionError("v downward");
    both.ofHeader = VeskarTest::conventionError("camera angles in radians").ofHeader;
    EXPECT_THAT(namesOf(checked(recorded, both)),
                testing::ElementsAre("v-downward", "camera-angles-radians"));
}

TEST_F(ConventionMistakes, AMirroredAzimuthIsNoLag) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 300.0);
    const RecordingCheckResult result = checked(recorded, "azimuth mirrored");
    EXPECT_THAT(namesOf(result), testing::ElementsAre("azimuth-sign"));
    EXPECT_FALSE(result.mounting.has_value());
    for (const Finding& finding : result.findings) {
        EXPECT_NE(finding.key, "lag");
    }
    EXPECT_THAT(textOf(result), HasSubstr("installation: cannot be judged before"));
}

TEST_F(ConventionMistakes, AWrongSpeedDoesNotHideTheInstallation) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 300.0);
    const RecordingCheckResult result = checked(recorded, "speed in km/h");
    EXPECT_THAT(namesOf(result), testing::ElementsAre("speed-unit"));
    EXPECT_TRUE(result.mounting.has_value());
    EXPECT_THAT(textOf(result), HasSubstr("km/h"));
}

TEST_F(ConventionMistakes, RefusedLinesAreToldOnceWithTheirReason) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 20.0);
    for (const char* what : {"v downward, bottom above top", "radar on UNIX time",
                             "radar stamps on UNIX time, received on uptime"}) {
        const RecordingCheckResult result = checked(recorded, what);
        EXPECT_EQ(std::count_if(
                      result.findings.begin(), result.findings.end(),
                      [](const Finding& finding) { return finding.severity == Severity::Fault; }),
                  1)
            << what;
        EXPECT_THAT(textOf(result), HasSubstr("frames are refused for it")) << what;
    }
    EXPECT_THAT(textOf(checked(recorded, "radar on UNIX time")),
                HasSubstr("the radar UNIX time and the video the time since a start"));
}

TEST_F(ConventionMistakes, AWordIsNamedOnceWithTheRightOne) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 10.0);
    const RecordingCheckResult result = checked(recorded, "class words of its own");
    EXPECT_THAT(namesOf(result), testing::ElementsAre("class-words"));
    const Finding& finding = result.conventions[0].finding;
    EXPECT_EQ(finding.key, "class");
    EXPECT_EQ(finding.value, "\"person\"");
    EXPECT_THAT(finding.message, HasSubstr("write \"human\""));
    EXPECT_GT(finding.line, 1U);
}

TEST_F(ConventionMistakes, TooFewObjectsAreCounted) {
    VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 20.0);
    EXPECT_THAT(textOf(checked(recorded, "nothing")),
                HasSubstr("too few objects were seen by both sensors to judge it: "));
    for (SensorFrame& frame : recorded.frames) {
        if (frame.source == Veskar::Radar) {
            frame.tracks.clear();
        }
    }
    EXPECT_THAT(textOf(checked(recorded, "nothing")),
                HasSubstr("0 samples of 0 pairs of tracks in 0 stretches of time"));
    EXPECT_THAT(textOf(checked(recorded, "nothing")), HasSubstr("radar 0"));
}

TEST_F(ConventionMistakes, TooFewObjectsAreNotTheReasonWhereSensorsDisagree) {
    VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 1, 300.0);
    recorded.header.camera.mounting.yaw += 40.0;
    const std::string text = textOf(checked(recorded, "nothing"));
    EXPECT_THAT(text, HasSubstr("radar and video do not see objects in the same places"));
    EXPECT_THAT(text, testing::Not(HasSubstr("too few objects")));
}

TEST_F(ConventionMistakes, ACrowdIsNotTooFewObjects) {
    const VeskarTest::Recorded recorded = VeskarTest::simulated("crowd", 1, 10.0);
    EXPECT_THAT(textOf(checked(recorded, "nothing")),
                HasSubstr("both sensors see the objects, but too rarely one that is alone"));
}

}  // namespace
}  // namespace Workbench
