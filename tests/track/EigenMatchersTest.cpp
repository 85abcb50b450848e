// SPDX-License-Identifier: Apache-2.0
// Tests the matchers themselves: what they must reject.
#include "support/Constants.h"
#include "support/EigenMatchers.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using Eigen::Matrix2d;
using Eigen::Vector2d;
using testing::Not;
using VeskarTest::HasNothingFinite;
using VeskarTest::IsApprox;
using VeskarTest::IsCovariance;
using VeskarTest::IsNearRelative;

TEST(EigenMatchers, ToleranceIsRelativeToTheLargestElement) {
    EXPECT_THAT(Vector2d(100.0, 1.0), IsApprox(Vector2d(100.0, 1.9), 0.01));
    EXPECT_THAT(Vector2d(100.0, 1.0), Not(IsApprox(Vector2d(100.0, 2.1), 0.01)));
}

TEST(EigenMatchers, ToleranceZeroAsksForEquality) {
    EXPECT_THAT(Vector2d(1.0, 2.0), IsApprox(Vector2d(1.0, 2.0), 0.0));
    EXPECT_THAT(Vector2d(1.0, 2.0), Not(IsApprox(Vector2d(1.0, std::nextafter(2.0, 3.0)), 0.0)));
}

TEST(EigenMatchers, NothingIsNearNotANumber) {
    EXPECT_THAT(Vector2d(1.0, nan), Not(IsApprox(Vector2d(1.0, 2.0), 1.0)));
    EXPECT_THAT(Vector2d(1.0, 2.0), Not(IsApprox(Vector2d(1.0, nan), 1.0)));
    EXPECT_THAT(nan, Not(IsNearRelative(1.0, 1.0)));
}

TEST(EigenMatchers, NearIsRelativeToTheExpectedNumber) {
    EXPECT_THAT(-101.0, IsNearRelative(-100.0, 0.011));
    EXPECT_THAT(-102.0, Not(IsNearRelative(-100.0, 0.011)));
}

TEST(EigenMatchers, CovariancesAreSymmetricAndPositiveDefinite) {
    Matrix2d P;
    P << 2.0, 1.0, 1.0, 2.0;
    EXPECT_THAT(P, IsCovariance());
    P << 2.0, 1.0, 1.1, 2.0;
    EXPECT_THAT(P, Not(IsCovariance()));
    P << 1.0, 2.0, 2.0, 1.0;
    EXPECT_THAT(P, Not(IsCovariance()));
}

TEST(EigenMatchers, OneFiniteElementIsSeen) {
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_THAT(Vector2d(nan, -inf), HasNothingFinite());
    EXPECT_THAT(Vector2d(nan, 0.0), Not(HasNothingFinite()));
}

}  // namespace
