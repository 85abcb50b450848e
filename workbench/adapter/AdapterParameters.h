// SPDX-License-Identifier: Apache-2.0
// What the reference adapter can be tuned by. docs/host-adapter.md tells what each value does.
#pragma once

#include <Eigen/Core>

namespace Workbench {

/// Constants of the reference adapter. The defaults were found in a numerical study over walkers,
/// traffic, crossings and fog; the video noise itself stands in the configuration ("veskarInputs").
struct AdapterParameters {
    // Gains: likelihood ratios by which a report raises the probability of its system track.
    double radarGain = 3.0;      ///< a confirmed radar track that the radar sees now
    double videoGain = 2.0;      ///< a confirmed video track that the camera sees now
    double tentativeGain = 1.2;  ///< a track that its sensor's tracker has not confirmed yet
    double coastingGain = 0.3;   ///< a track that its sensor predicts without seeing it
    double predictedGain = 1.0;  ///< a report that the host predicts between those of a slow sensor

    /// Independent standard deviations added to a radar track's projected ones, in the order of the
    /// fusion state: u, u rate [1/s], v, v rate [1/s], range [m], range rate [m/s]. The projection
    /// of a ground state has rank 4 of 6; without these floors the covariance is singular and every
    /// small calibration error tears the sensors apart. For an image 90 degrees wide with sides of
    /// 16:9; for others the first four are scaled to the same angles.
    Eigen::Matrix<double, 6, 1> radarFloorStd =
        (Eigen::Matrix<double, 6, 1>() << 0.02, 0.03, 0.05, 0.05, 0.3, 0.3).finished();

    /// Added to the standard deviation of the pseudo range, as a fraction of the range.
    double pseudoRangeStdPerRange = 0.1;
    /// Added to the standard deviation of both ranges, times the range rate [s]: the fusion does
    /// not move the range between reports.
    double rangeStdPerRate = 0.05;

    double unknownImageVelocityStd = 0.3;    ///< video track without velocity, 1/s
    double unknownTangentialSpeedStd = 3.0;  ///< radar track with a radial speed only, m/s
    double predictedAccelerationStd = 1.0;   ///< growth of a track predicted by the host, m/s^2

    double humanSpeedLimit = 3.0;            ///< a radar track below it is taken for a human, m/s
    double classFromSpeedProbability = 0.5;  ///< probability of a class taken from the speed
};

}  // namespace Workbench
