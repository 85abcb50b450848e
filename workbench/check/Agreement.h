// SPDX-License-Identifier: Apache-2.0
// How well radar and video agree on where objects are, under each reading of their numbers.
#pragma once

#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>

#include "check/Hypothesis.h"
#include "check/VoteGrid.h"
#include "recording/Recording.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace Workbench {

/// One reading of all numbers that place an object.
struct Reading {
    BoxForm box = BoxForm::Stated;
    AngleForm angles = AngleForm::Stated;
    AzimuthForm azimuth = AzimuthForm::Stated;

    /// @return how many of them differ from what the format says
    int changes() const;
};

/// Counts the video reports that have a radar report where it should be.
///
/// Every video report and every radar report of one time cast a vote for the difference of their
/// bearings and the ratio of their distances (in the manner of a Hough transform): true pairs vote
/// for the same small window, whatever the installation is off by, others for windows all over the
/// place. So objects need not be alone, nor the installation right, for the right reading to win.
/// Memory is bounded.
class Agreement {
public:
    /// @param header the installation as stated
    explicit Agreement(const RecordingHeader& header);

    /// @param frame the next frame
    void add(const SensorFrame& frame);

    /// @return how many video reports were asked for a partner
    std::uint64_t asked() const { return videoReports_; }
    /// @param reading how the numbers are read
    /// @return the share of video reports with a partner in the best window, 0..1
    double share(const Reading& reading) const;

    /// What the camera's height must be for both sensors' distances to agree.
    struct Height {
        double factor;  ///< true height over stated height
        double share;   ///< of the video reports with a partner then, 0..1
        bool isPitch;   ///< whether a wrong pitch explains the differences as well
    };
    /// @return as all numbers are stated; nothing without pairs of the same bearing
    std::optional<Height> height() const;

private:
    /// Where a sensor sees something: bearing [radians], and the logarithm of the distance over the
    /// camera's stated height.
    struct Place {
        double bearing;
        double logDistance;
    };
    using Places = std::vector<std::optional<Place>>;
    struct RadarPoint {
        std::int32_t id;
        double range;
        double azimuth;
    };
    struct RadarPoints {
        double time;
        std::vector<RadarPoint> points;
    };
    struct VideoBoxes {
        double time;
        std::vector<ImageBox> boxes;
    };
    struct Pair {
        std::uint64_t video;  ///< counts video reports
        double bearingError;
        double logRatio;  ///< of the distance by radar to that by video
        double logDistance;
    };

    void work();
    std::vector<RadarPoint> radarAt(double time) const;
    void compare(const VideoBoxes& video, const std::vector<RadarPoint>& points);
    Places placesOf(const std::vector<ImageBox>& boxes, BoxForm form,
                    const Projection& projection) const;
    Places placesOf(const std::vector<RadarPoint>& points, AzimuthForm form) const;
    void vote(VoteGrid& grid, const Places& video, const Places& radar) const;
    void keepPairs(const Places& video, const Places& radar);
    std::size_t indexOf(const Reading& reading) const;

    std::array<int, 2> resolution_;
    Eigen::Vector2d origin_;
    double cameraHeight_;
    RadarModel radar_;
    std::vector<std::optional<Projection>> projections_;  ///< by AngleForm
    std::deque<RadarPoints> radarFrames_;
    std::deque<VideoBoxes> pending_;
    double lastSample_ = -1e300;
    std::uint64_t videoReports_ = 0;
    std::vector<VoteGrid> votes_;  ///< by reading
    std::vector<Pair> pairs_;
    std::uint64_t keptOneOf_ = 1;
};

}  // namespace Workbench
