// SPDX-License-Identifier: Apache-2.0
// What the adapter and the host's duties can be tuned by. docs/host-adapter.md tells what each
// value does.
#pragma once

#include <veskar-host/ExportHost.h>

#include <string>

#include <Eigen/Core>

namespace Veskar::Host {

/// Constants of the adapter and of the host's duties. The defaults were found in a numerical study
/// over walkers, traffic, crossings and fog; the video noise itself stands in the configuration
/// ("veskarInputs").
struct VESKAR_HOST_EXPORT HostParameters {
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

    // Duties: when a host steps in for its sensors.
    /// Seconds without video after which video is silent, and the spacing of the empty frames that
    /// are then fed for it: radar frames wait for video's clock, 1.5 s each when it stands still.
    double videoSilence = 0.2;
    /// A sensor with frames farther apart than this (s) is slow: the fusion drops sensor tracks
    /// after 0.5 s of coasting, so its tracks are predicted in between.
    double slowInterval = 0.4;
    /// Spacing of predicted frames, s.
    double predictionInterval = 0.2;
    /// Predicted frames end after this many of the sensor's own intervals without a frame.
    double belief = 1.5;
    /// They end after this long (s) in any case, and so does the work that a gap can make.
    double longestBelief = 60.0;
    /// Seconds without any report, predicted ones included, after which empty frames end until a
    /// sensor speaks again. All tracks are gone a second after the last report: empty frames change
    /// nothing any more, and a gap may be of any length.
    double longestGap = 10.0;

    /// Reads the object "veskarHost" of a configuration of the fusion, which the fusion itself
    /// passes over. Its members are those of this record; what is missing keeps its default, and so
    /// does everything without that object. Integers may stand for reals, "radarFloorStd" is an
    /// array.
    ///
    /// @param json JSON text of the configuration
    /// @return the constants
    /// @throw InputError what is wrong first, as "veskarHost.radarGain: 0 is not above 0 and
    ///                   at most 1000000"
    static HostParameters fromConfig(const std::string& json);
    /// Sets one constant, as from a command line. Changes nothing when it throws.
    ///
    /// @param name of the member, with or without "veskarHost." before it
    /// @param value JSON text: "2.5", "[0.02, 0.03, 0.05, 0.05, 0.3, 0.3]"
    /// @throw InputError what is wrong
    void set(const std::string& name, const std::string& value);
    /// @return JSON text of the object with those members that differ from their defaults; "{}"
    ///         when none does
    std::string toJson() const;
};

}  // namespace Veskar::Host
