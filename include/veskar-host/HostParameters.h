// SPDX-License-Identifier: Apache-2.0
// Parameters of the adapter and of the sensor supervision. docs/host-adapter.md explains the effect
// of each.
#pragma once

#include <veskar-host/ExportHost.h>

#include <string>

#include <Eigen/Core>

namespace Veskar::Host {

/// Parameters of the adapter and of the sensor supervision. The defaults were found in a numerical
/// study with walkers, traffic, crossings and fog. The noise of the video sensor is part of the
/// configuration ("veskarInputs").
struct VESKAR_HOST_EXPORT HostParameters {
    // Gains: likelihood ratios by which a report raises the probability of its system track.
    double radarGain = 3.0;      ///< a confirmed radar track with a current detection
    double videoGain = 2.0;      ///< a confirmed video track with a current detection
    double tentativeGain = 1.2;  ///< a track that its sensor's tracker has not confirmed yet
    double coastingGain = 0.3;   ///< a coasting track
    double predictedGain = 1.0;  ///< a report that the host predicted between two of a slow sensor

    /// Standard deviations of independent noise added to a projected radar track, in the order of
    /// the fusion state: u, u rate [1/s], v, v rate [1/s], range [m], range rate [m/s]. The
    /// projected covariance of a ground state has rank 4 of 6 and is singular without these floors,
    /// and then every small calibration error makes the tracks of both sensors incompatible. They
    /// apply to an image 90 degrees wide with an aspect ratio of 16:9; for other images the first
    /// four are scaled to the same angles.
    Eigen::Matrix<double, 6, 1> radarFloorStd =
        (Eigen::Matrix<double, 6, 1>() << 0.02, 0.03, 0.05, 0.05, 0.3, 0.3).finished();

    /// Added to the standard deviation of the pseudo range, as a fraction of the range.
    double pseudoRangeStdPerRange = 0.1;
    /// Added to the standard deviation of both ranges, per range rate [s]: the fusion does not
    /// predict the range between reports.
    double rangeStdPerRate = 0.05;

    /// Standard deviation of the slope of the ground between the camera and an object, degrees. A
    /// slope s moves the pseudo range R of a camera at height h by R^2 / h tan(s). 0: the ground is
    /// flat.
    double groundSlopeStd = 0.0;
    /// Standard deviation that is added in quadrature to that of the image position, in the
    /// direction in which the image border cuts a box; that of the pseudo range of a box that is
    /// cut at a side is at least "maximumPseudoRangeStd". 0: a cut box is taken as it is.
    double cutBoxStd = 0.0;

    double unknownImageVelocityStd = 0.3;    ///< of a video track without velocity, 1/s
    double unknownTangentialSpeedStd = 3.0;  ///< of a radar track with a radial speed only, m/s
    double predictedAccelerationStd = 1.0;   ///< process noise of the host's predictions, m/s^2

    double humanSpeedLimit = 3.0;            ///< unclassified radar tracks below are human, m/s
    double classFromSpeedProbability = 0.5;  ///< probability of a class derived from the speed

    // Supervision: frames that the host adds for silent or slow sensors.
    /// Time without a video frame after which video counts as silent, and interval of the empty
    /// frames that are added then, s. Without them every radar frame would be held back for 1.5 s,
    /// because the module waits for video to reach its time.
    double videoSilence = 0.2;
    /// A sensor whose frame interval exceeds this (s) is slow. The fusion drops sensor tracks after
    /// 0.5 s of coasting, so the tracks of a slow sensor are predicted between its frames.
    double slowInterval = 0.4;
    /// Interval of predicted frames, s.
    double predictionInterval = 0.2;
    /// Coasting times of a slow sensor are scaled as if it sent its frames at this interval, in
    /// predicted reports, too: the limits of the fusion are made for sensors that send ten frames a
    /// second, and a slow sensor that misses an object once would lose its track. 0: coasting times
    /// are taken as reported, and predicted reports do not coast.
    double nominalInterval = 0.0;
    /// Prediction ends when no frame has come for this many frame intervals of the sensor.
    double belief = 1.5;
    /// Longest prediction without a frame, s; also bounds the number of frames added during a gap.
    double longestBelief = 60.0;
    /// Time without any report, predicted ones included, after which no empty frames are added
    /// until the next report, s. All tracks are deleted within a second after the last report, so
    /// further empty frames have no effect, and gaps may have any length.
    double longestGap = 10.0;

    /// Reads the object "veskarHost" of a fusion configuration, which the fusion itself ignores.
    /// Its members are named like those of this struct; missing members, or a missing object, leave
    /// the defaults. Integers are accepted as reals; "radarFloorStd" is an array.
    ///
    /// @param json JSON text of the configuration
    /// @return the parameters
    /// @throw InputError the first fault, as "veskarHost.radarGain: 0 is not above 0 and at most
    ///                   1000000"
    static HostParameters fromConfig(const std::string& json);
    /// Sets one constant, as from a command line. Changes nothing when it throws.
    ///
    /// @param name of the member, with or without "veskarHost." before it
    /// @param value JSON text: "2.5", "[0.02, 0.03, 0.05, 0.05, 0.3, 0.3]"
    /// @throw InputError what is wrong
    void set(const std::string& name, const std::string& value);
    /// @return JSON text of an object with the members that differ from their defaults; "{}" when
    ///         none does
    std::string toJson() const;
};

}  // namespace Veskar::Host
