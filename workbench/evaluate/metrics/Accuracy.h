// SPDX-License-Identifier: Apache-2.0
// Errors of matched tracks, and their consistency with the reported covariances.
#pragma once

#include "evaluate/metrics/Assignment.h"
#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/Median.h"

namespace Workbench {

/// Position and velocity errors over all matches.
///
/// Radial errors are along the line from the observer to the true object, cross-range errors
/// perpendicular to it, positive to the left. They are separated because radar and camera err in
/// different directions.
class Accuracy {
public:
    /// @param sensors position of the sensors on the ground, m
    explicit Accuracy(const Eigen::Vector2d& sensors) : observer_(sensors) {}

    /// @param pairs matches of @p instant, (true object, track)
    void add(const Instant& instant, const Pairs& pairs);

    /// Begins a second pass over the same instants, which the median needs.
    void beginAgain() { errors_.beginAgain(); }
    /// The same calls as of add.
    void addAgain(const Instant& instant, const Pairs& pairs);

    /// Values without anything to average are NaN.
    struct Result {
        int matches = 0;
        double positionRmse = 0.0;    ///< m
        double positionMedian = 0.0;  ///< m; known after the second pass
        double radialRmse = 0.0;      ///< m
        double crossRangeRmse = 0.0;  ///< m
        double radialBias = 0.0;      ///< mean error, m; positive: reported too far away
        double crossRangeBias = 0.0;  ///< mean error, m; positive: reported too far left
        int velocityMatches = 0;      ///< matches of objects whose velocity is known
        double velocityRmse = 0.0;    ///< m/s
        double classAgreement = 0.0;  ///< share of the matches with the true class
    };
    Result result() const;

private:
    Eigen::Vector2d observer_;
    Median errors_;
    double squaredRadial_ = 0.0;
    double squaredCrossRange_ = 0.0;
    double radial_ = 0.0;
    double crossRange_ = 0.0;
    double squaredVelocity_ = 0.0;
    int velocityMatches_ = 0;
    int classMatches_ = 0;
};

/// Consistency of position and covariance over all matches: the normalised estimation error squared
/// e' P^-1 e of the position (Bar-Shalom, Li, Kirubarajan: Estimation with Applications to Tracking
/// and Navigation, 2001, 5.4). Its mean is 2 for a consistent tracker; more means too confident.
class Consistency {
public:
    /// @param pairs matches of @p instant, (true object, track)
    void add(const Instant& instant, const Pairs& pairs);

    /// Not a number without a match.
    struct Result {
        double meanNees = 0.0;       ///< expected 2
        double shareWithin95 = 0.0;  ///< share below the chi-square bound of 95 %; expected 0.95
        int matches = 0;             ///< matches with a positive definite covariance
    };
    Result result() const;

private:
    double sum_ = 0.0;
    int within_ = 0;
    int matches_ = 0;
};

}  // namespace Workbench
