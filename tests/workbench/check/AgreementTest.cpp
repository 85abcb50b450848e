// SPDX-License-Identifier: Apache-2.0
// The agreement of radar and video under each reading of their numbers.
#include "check/Agreement.h"
#include "check/ConventionErrors.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// A minute of the shipped perimeter.
const VeskarTest::Recorded& perimeter() {
    static const VeskarTest::Recorded recorded = VeskarTest::simulated("perimeter", 3, 60.0);
    return recorded;
}

/// @return the agreement when every line has this fault
Agreement withError(const char* what) {
    const VeskarTest::ConventionError& error = VeskarTest::conventionError(what);
    RecordingHeader header = perimeter().header;
    if (error.ofHeader != nullptr) {
        error.ofHeader(header);
    }
    Agreement agreement(header);
    for (SensorFrame frame : perimeter().frames) {
        if (error.ofFrame != nullptr) {
            error.ofFrame(frame);
        }
        agreement.add(frame);
    }
    return agreement;
}

/// Checks that one reading makes the sensors agree, and no other one does.
void expectOnly(const char* what, const Reading& right) {
    const Agreement agreement = withError(what);
    EXPECT_GT(agreement.asked(), 300U) << what;
    EXPECT_GT(agreement.share(right), 0.5) << what;
    for (const BoxForm box : boxForms) {
        for (const AzimuthForm azimuth : azimuthForms) {
            if (box != right.box || azimuth != right.azimuth) {
                EXPECT_LT(agreement.share({box, right.angles, azimuth}), 0.3)
                    << what << " " << static_cast<int>(box) << " " << static_cast<int>(azimuth);
            }
        }
    }
}

TEST(Agreement, IsThatOfTheRightReading) {
    expectOnly("nothing", {});
    expectOnly("v downward", {BoxForm::Downward, {}, {}});
    expectOnly("boxes 0..1", {BoxForm::Unit, {}, {}});
    expectOnly("boxes 0..1, v downward", {BoxForm::UnitDownward, {}, {}});
    expectOnly("boxes in pixels", {BoxForm::Pixels, {}, {}});
    expectOnly("camera angles in radians", {{}, AngleForm::Radians, {}});
    expectOnly("azimuth mirrored", {{}, {}, AzimuthForm::Mirrored});
    expectOnly("azimuth in radians", {{}, {}, AzimuthForm::Radians});
}

TEST(Agreement, EstimatesTheHeightOfTheCamera) {
    const auto heightWith = [](const char* what) { return withError(what).height().value(); };
    EXPECT_NEAR(heightWith("nothing").factor, 1.0, 0.05);
    const Agreement::Height half = heightWith("camera height times 2");
    EXPECT_NEAR(half.factor, 0.5, 0.03);
    EXPECT_GT(half.share, 0.5);
    EXPECT_FALSE(half.isPitch);
    EXPECT_NEAR(heightWith("camera height in centimetres").factor, 0.01, 0.001);
}

TEST(Agreement, KnowsNothingOfOneSensor) {
    Agreement agreement(perimeter().header);
    for (const SensorFrame& frame : perimeter().frames) {
        if (frame.source == Veskar::VideoObject) {
            agreement.add(frame);
        }
    }
    EXPECT_EQ(agreement.share({}), 0.0);
    EXPECT_FALSE(agreement.height().has_value());
}

}  // namespace
}  // namespace Workbench
