// SPDX-License-Identifier: Apache-2.0
// Distances between the set of true objects and the set of tracks: GOSPA and OSPA.
#pragma once

#include "evaluate/metrics/Assignment.h"
#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"

namespace Workbench {

/// Parameters of a set distance.
struct SetDistanceParameters {
    double cutoff = 5.0;  ///< c, m: pairs farther apart count as one missed and one false
    double order = 2.0;   ///< p
};

/// The pairs of the optimal assignment, which is the same for GOSPA and OSPA.
///
/// @param near pairs of @p instant, at least those within the cutoff
/// @return pairs (true object, track) within the cutoff
Pairs matchWithinCutoff(const Instant& instant, const NearPairs& near,
                        const SetDistanceParameters& parameters);

/// The generalised optimal sub-pattern assignment metric with alpha = 2 (Rahmathullah,
/// Garcia-Fernandez, Svensson: "Generalized optimal sub-pattern assignment metric", FUSION 2017):
///
///     GOSPA = (sum over pairs d^p + c^p / 2 (missed + false))^(1/p)
struct Gospa {
    double distance = 0.0;          ///< m
    double localisationCost = 0.0;  ///< sum over pairs of d^p, m^p
    int matched = 0;                ///< pairs
    int missed = 0;                 ///< true objects without a track
    int falseTracks = 0;            ///< tracks without a true object
};

/// @param matches from matchWithinCutoff
/// @return the metric at one instant; zero when there are neither objects nor tracks
Gospa gospa(const Instant& instant, const Pairs& matches, const SetDistanceParameters& parameters);

/// The optimal sub-pattern assignment metric (Schuhmacher, Vo, Vo: "A consistent metric for
/// performance evaluation of multi-object filters", IEEE Trans. Signal Processing 56, 2008):
///
///     OSPA = (1/n (sum over pairs min(d, c)^p + c^p |m - n|))^(1/p),  n the larger number
///
/// @param costs GOSPA at the instant, by the same parameters
/// @return the metric at one instant, m; zero when there are neither objects nor tracks
double ospa(const Gospa& costs, const SetDistanceParameters& parameters);

/// GOSPA over time.
class GospaMean {
public:
    explicit GospaMean(const SetDistanceParameters& parameters) : parameters_(parameters) {}

    void add(const Gospa& one);

    /// Mean over time, and the components of the mean power, each as a length: with order 2, the
    /// square of the root mean square of GOSPA is the sum of their squares.
    struct Result {
        double mean = 0.0;           ///< mean GOSPA, m
        double rootMeanPower = 0.0;  ///< (mean of GOSPA^p)^(1/p), m
        double localisation = 0.0;   ///< (mean localisation cost)^(1/p), m
        double missed = 0.0;         ///< (c^p / 2 times mean number of missed objects)^(1/p), m
        double falseTracks = 0.0;    ///< (c^p / 2 times mean number of false tracks)^(1/p), m
        double missedPerInstant = 0.0;
        double falsePerInstant = 0.0;
    };
    Result result() const;

private:
    SetDistanceParameters parameters_;
    double sum_ = 0.0;
    double localisationCost_ = 0.0;
    double missed_ = 0.0;
    double falseTracks_ = 0.0;
    int instants_ = 0;
};

/// OSPA over time.
class OspaMean {
public:
    explicit OspaMean(const SetDistanceParameters& parameters) : parameters_(parameters) {}

    /// @param costs GOSPA at an instant, by the same parameters
    void add(const Gospa& costs);
    /// @return mean OSPA, m; zero without any instant
    double result() const;

private:
    SetDistanceParameters parameters_;
    double sum_ = 0.0;
    int instants_ = 0;
};

}  // namespace Workbench
