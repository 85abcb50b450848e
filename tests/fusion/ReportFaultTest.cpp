// SPDX-License-Identifier: Apache-2.0
#include "fusion/ReportFault.h"
#include "support/Constants.h"
#include "support/RandomEstimates.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <limits>

#include <Eigen/Cholesky>
#include <gtest/gtest.h>

namespace VeskarTest {
namespace {

using Veskar::faultOf;
using Veskar::isPositiveDefinite;
using Veskar::ReportFault;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::Track;

constexpr double notFinite[] = {nan, infinite, -infinite};
constexpr double denormal = std::numeric_limits<double>::denorm_min();
constexpr double frameTime = 100.0;

Track soundReport() {
    Report report;
    report.time = frameTime;
    Track track = *makeTrack(report);
    track.probability = 2.0;
    return track;
}

// --- Reports

TEST(ReportFault, IsNotInASoundReport) {
    EXPECT_EQ(faultOf(soundReport(), frameTime), ReportFault::None);
}

TEST(ReportFault, IsAnyNumberThatIsNotFinite) {
    for (const double bad : notFinite) {
        for (int i = 0; i < 6; ++i) {
            Track track = soundReport();
            track.state[i] = bad;
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::NotFinite);
        }
        for (int i = 0; i < 36; ++i) {
            Track track = soundReport();
            track.covariance.data()[i] = bad;
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::NotFinite);
        }
        for (double Track::*member : {&Track::time, &Track::coastingTime, &Track::probability}) {
            Track track = soundReport();
            track.*member = bad;
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::NotFinite);
            track.covariance.setZero();
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::NotFinite) << "whatever else it has";
        }
    }
}

TEST(ReportFault, IsATimeMoreThanTenSecondsFromTheFrame) {
    for (const double sign : {1.0, -1.0}) {
        Track track = soundReport();
        track.time = frameTime + sign * 10.0;
        EXPECT_EQ(faultOf(track, frameTime), ReportFault::None);
        track.time = std::nextafter(track.time, sign * infinite);
        EXPECT_EQ(faultOf(track, frameTime), ReportFault::CannotBeFused);
    }
}

TEST(ReportFault, IsANegativeCoastingTimeOrGain) {
    for (double Track::*member : {&Track::coastingTime, &Track::probability}) {
        for (const double good : {0.0, -0.0, denormal, 1e300}) {
            Track track = soundReport();
            track.*member = good;
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::None) << good;
        }
        for (const double bad : {-denormal, -1.0}) {
            Track track = soundReport();
            track.*member = bad;
            EXPECT_EQ(faultOf(track, frameTime), ReportFault::CannotBeFused) << bad;
        }
    }
}

TEST(ReportFault, IsACovarianceThatIsNotPositiveDefinite) {
    Track track = soundReport();
    track.covariance(1, 1) = 0.0;
    EXPECT_EQ(faultOf(track, frameTime), ReportFault::CannotBeFused);
}

// --- Covariances

TEST(PositiveDefinite, HasVariancesFrom1eMinus30To1e30) {
    for (int i = 0; i < 6; ++i) {
        StateMatrix P = StateMatrix::Identity();
        for (const double good : {1e-30, 1e30}) {
            P(i, i) = good;
            EXPECT_TRUE(isPositiveDefinite(P)) << i << " " << good;
        }
        for (const double bad : {std::nextafter(1e-30, 0.0), std::nextafter(1e30, infinite), 0.0,
                                 denormal, -1.0, infinite, nan}) {
            P(i, i) = bad;
            EXPECT_FALSE(isPositiveDefinite(P)) << i << " " << bad;
        }
    }
}

TEST(PositiveDefinite, IsSymmetricToOneBillionthOfTheScale) {
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < 6; ++j) {
            if (i == j) {
                continue;
            }
            StateMatrix P = StateMatrix::Identity();
            P(i, i) = 4.0;
            P(j, j) = 16.0;
            const double limit = 8e-9;
            for (const double sign : {1.0, -1.0}) {
                P(i, j) = sign * limit;
                EXPECT_TRUE(isPositiveDefinite(P)) << i << " " << j;
                P(i, j) = sign * std::nextafter(limit, 1.0);
                EXPECT_FALSE(isPositiveDefinite(P)) << i << " " << j;
            }
        }
    }
}

TEST(PositiveDefinite, HasScaledPivotsAbove1eMinus12) {
    const auto correlated = [](int i, int j, double pivot) {
        StateMatrix P = StateMatrix::Identity();
        P(i, j) = P(j, i) = std::sqrt(1.0 - pivot);
        return P;
    };
    for (int j = 1; j < 6; ++j) {
        for (int i = 0; i < j; ++i) {
            EXPECT_TRUE(isPositiveDefinite(correlated(i, j, 1.01e-12))) << i << " " << j;
            EXPECT_FALSE(isPositiveDefinite(correlated(i, j, 0.99e-12))) << i << " " << j;
            EXPECT_FALSE(isPositiveDefinite(correlated(i, j, 0.0))) << i << " " << j;
            EXPECT_FALSE(isPositiveDefinite(correlated(i, j, -0.5))) << i << " " << j;
        }
    }
}

TEST(PositiveDefinite, IsNotAskedOfTheUnits) {
    StateVector units;
    units << 1e-12, 1e12, 1.0, 1e-6, 1e9, 1e3;
    RandomEstimates random(1);
    for (int round = 0; round < 100; ++round) {
        const StateMatrix P = random.covariance();
        EXPECT_TRUE(isPositiveDefinite(units.asDiagonal() * P * units.asDiagonal()));
        StateMatrix indefinite = P;
        indefinite(5, 2) = indefinite(2, 5) = 1.0001 * std::sqrt(P(2, 2) * P(5, 5));
        EXPECT_FALSE(isPositiveDefinite(units.asDiagonal() * indefinite * units.asDiagonal()));
    }
}

/// Shrinks the standard deviation of a covariance in one direction to a fraction. The direction
/// involves every component, so that only the last pivot becomes small, by a known amount.
StateMatrix squeezed(const StateMatrix& P, unsigned signs, double share) {
    StateVector direction;
    for (unsigned i = 0; i < 6; ++i) {
        direction[i] = ((signs >> i) & 1U) != 0 ? std::sqrt(1.0 / 6.0) : -std::sqrt(1.0 / 6.0);
    }
    const StateMatrix squeeze =
        StateMatrix::Identity() - (1.0 - share) * direction * direction.transpose();
    const StateMatrix result = squeeze * P * squeeze;
    return 0.5 * (result + result.transpose());
}

TEST(PositiveDefinite, IsNoMatrixOfLowRank) {
    EXPECT_FALSE(isPositiveDefinite(StateMatrix::Zero()));
    EXPECT_FALSE(isPositiveDefinite(StateMatrix::Ones()));
    RandomEstimates random(2);
    for (int rank = 1; rank < 5; ++rank) {
        for (int round = 0; round < 100; ++round) {
            StateMatrix P = StateMatrix::Zero();
            for (int i = 0; i < rank; ++i) {
                const StateVector x = random.state();
                P += x * x.transpose();
            }
            EXPECT_FALSE(isPositiveDefinite(P)) << rank;
        }
    }
    for (unsigned signs = 0; signs < 64; ++signs) {
        EXPECT_FALSE(isPositiveDefinite(squeezed(StateMatrix::Identity(), signs, 0.0)));
    }
}

TEST(PositiveDefinite, IsNoMatrixThatOverflows) {
    for (const double huge : {1e200, 1e308, -1e308}) {
        for (int j = 1; j < 6; ++j) {
            for (int i = 0; i < j; ++i) {
                StateMatrix P = StateMatrix::Constant(0.1) + StateMatrix::Identity();
                P(i, j) = P(j, i) = huge;
                EXPECT_FALSE(isPositiveDefinite(P)) << i << " " << j;
            }
        }
    }
}

/// Compared with Eigen's factorisation of the scaled matrix in long double, also near the limit.
TEST(PositiveDefinite, AgreesWithACholeskyFactorisation) {
    using Matrix = Eigen::Matrix<long double, 6, 6>;
    RandomEstimates random(3);
    int accepted = 0;
    int refused = 0;
    for (int round = 0; round < 20000; ++round) {
        const StateMatrix P =
            squeezed(random.covariance(), static_cast<unsigned>(random.integer(0, 63)),
                     std::pow(10.0, random.uniform(-8.0, -4.0)));
        const Matrix exact = P.cast<long double>();
        const Eigen::Matrix<long double, 6, 1> scale = exact.diagonal().cwiseSqrt().cwiseInverse();
        const Eigen::LLT<Matrix> llt(scale.asDiagonal() * exact * scale.asDiagonal());
        const Matrix factor = llt.matrixL();
        const auto smallest = static_cast<double>(factor.diagonal().cwiseAbs2().minCoeff());
        if (llt.info() != Eigen::Success || smallest < 0.5e-12) {
            EXPECT_FALSE(isPositiveDefinite(P)) << smallest;
            ++refused;
        } else if (smallest > 2e-12) {
            EXPECT_TRUE(isPositiveDefinite(P)) << smallest;
            ++accepted;
        }
    }
    EXPECT_GT(accepted, 2000);
    EXPECT_GT(refused, 2000);
}

}  // namespace
}  // namespace VeskarTest
