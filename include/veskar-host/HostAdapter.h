// SPDX-License-Identifier: Apache-2.0
// From sensor reports to the tracks that the fusion takes.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/Installation.h>
#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>
#include <veskar-host/SensorFrame.h>
#include <veskar-host/VideoModel.h>
#include <veskar/Config.h>
#include <veskar/Track.h>

#include <memory>
#include <optional>
#include <vector>

namespace Veskar::Host {

/// A sensor track that keeps the time of its estimate. The library keeps the host's track objects,
/// so that a host can carry its own data in a derived class.
class VESKAR_HOST_EXPORT ReportedTrack : public Track {
public:
    using Track::Track;

    double reportTime = time;  ///< of the estimate, s; the fusion does not advance it
};

/// Turns frames of reports into tracks in the fusion frame. Nothing of it changes once it is made:
/// several threads may use one.
class VESKAR_HOST_EXPORT HostAdapter {
public:
    /// @param installation the sensors and where they are
    /// @param config only its "veskarInputs" section is used
    /// @param parameters constants
    HostAdapter(const Installation& installation, const Config& config,
                const HostParameters& parameters = {});

    /// @param frame one frame of a sensor
    /// @param uptime offset of the module's time base to the frame's, s
    /// @param ahead seconds by which the tracks are predicted with constant velocity before they
    ///              are converted; if positive, their coasting times are set to 0 unless they
    ///              are scaled
    /// @param slowInterval interval of the sensor's frames if it is slow, s, or 0; with
    ///                     "nominalInterval" its coasting times are scaled
    /// @return its tracks in the same order, at the frame's time plus uptime plus ahead
    std::vector<std::shared_ptr<Track>> convert(const SensorFrame& frame, double uptime = 0.0,
                                                double ahead = 0.0,
                                                double slowInterval = 0.0) const;

    /// @return the camera's geometry
    const Projection& projection() const { return camera_; }
    /// @return the site of the device, when known
    const std::optional<Site>& site() const { return site_; }

private:
    struct Moment {
        double time;
        double ahead;
        Source source;
    };
    std::shared_ptr<Track> convert(const VideoReport& report, const Moment& when) const;
    std::shared_ptr<Track> convert(const RadarReport& report, const Moment& when) const;
    std::shared_ptr<Track> convert(const ReadyEstimate& report, const Moment& when) const;
    double gainOf(const ReportBase& report, Source source) const;
    double coastingOf(const ReportBase& report, bool isPredicted, double slowInterval) const;
    Label radarClass(const RadarReport& report, double speed) const;
    ImageBox expectedBox(const Eigen::Vector2d& ground, const FusionEstimate& estimate,
                         const std::string& className) const;
    void locate(Track& track, const Eigen::Vector2d& ground) const;

    HostParameters parameters_;
    Projection camera_;
    VideoModel video_;
    RadarModel radar_;
    std::optional<Site> site_;
    StateVector radarFloor_;  ///< variances added to a projected radar track
};

}  // namespace Veskar::Host
