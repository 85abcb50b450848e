// SPDX-License-Identifier: Apache-2.0
// Offers matching radar and video observations to the calibration service.
#pragma once

#include <veskar/Config.h>
#include <veskar/Export.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Veskar {

/// One object seen by both sensors.
struct CalibrationSample {
    double u_video;  ///< first image coordinate of the video track
    double v_video;  ///< second image coordinate of the video track
    int id_radar;    ///< id of the radar track
    double r_radar;  ///< range of the radar track, m
};

/// The samples of one radar frame.
struct CalibrationPayload {
    std::vector<CalibrationSample> data;  ///< samples in the order of the system tracks
    std::int64_t timestamp;               ///< time of the radar frame, ns
};

/// Picks the system tracks that radar and video see well and sends one datagram per radar frame to
/// "/tmp/autocalibration.sock", best effort, only inside the host application. Keeps no state
/// between frames. Runs on the fusion thread.
class VESKAR_EXPORT AutocalibrationHandler {
public:
    /// Decides once whether this process is the host application.
    /// @param config copied; its "autocalibration" keys count
    explicit AutocalibrationHandler(const Config& config);

    /// Collects the samples of a radar frame and sends them when there are any; at most 11.
    ///
    /// @param systemTracks the system tracks
    /// @param videoTracks the tracks of the last video frame
    /// @param nanoseconds time of the radar frame, ns
    void handleUpdate(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                      const std::vector<std::shared_ptr<Track>>& videoTracks,
                      std::int64_t nanoseconds);

    /// Appends a sample when the track is old enough, not coasting, away from the image's edge, of
    /// a class and shape with known limits, and alone.
    ///
    /// @param systemTrack the candidate
    /// @param videoTracks the tracks of the last video frame
    /// @param payload receives the sample
    void handleSystemTrack(const SystemTrack& systemTrack,
                           const std::vector<std::shared_ptr<Track>>& videoTracks,
                           CalibrationPayload& payload) const;

    /// @param payload the samples
    /// @return the datagram's text: compact JSON, doubles with six significant digits
    std::string formatPayload(const CalibrationPayload& payload) const;

    /// Sends one datagram; a missing service is silent, other failures are logged.
    /// @param payload the samples
    void sendCalibrationData(const CalibrationPayload& payload) const;

private:
    std::string socketPath_;
    bool enabled_;
    Config config_;
};

}  // namespace Veskar
