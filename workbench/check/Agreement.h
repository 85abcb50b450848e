// SPDX-License-Identifier: Apache-2.0
// How well radar and video agree on the objects' positions under each reading of their numbers.
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

/// A combination of readings of all numbers that determine positions.
struct Reading {
    BoxForm box = BoxForm::Stated;
    AngleForm angles = AngleForm::Stated;
    AzimuthForm azimuth = AzimuthForm::Stated;

    /// @return how many of them differ from the conventions of the format
    int changes() const;
};

/// Counts the video reports with a matching radar report.
///
/// Each pair of a video and a radar report of the same time votes for its difference of bearings
/// and ratio of distances (in the manner of a Hough transform). True pairs vote for the same small
/// window, even if the installation is wrong; votes of false pairs are spread over all windows. The
/// right reading therefore gets the most votes even when objects are not isolated. Memory is
/// bounded.
class Agreement {
public:
    /// @param header the installation as stated
    explicit Agreement(const RecordingHeader& header);

    /// @param frame the next frame
    void add(const SensorFrame& frame);

    /// @return number of video reports that were compared
    std::uint64_t asked() const { return videoReports_; }
    /// @param reading how the numbers are read
    /// @return share of the video reports that have a partner in the best window, 0..1
    double share(const Reading& reading) const;

    /// The camera height at which the distances of both sensors agree.
    struct Height {
        double factor;  ///< true height over stated height
        double share;   ///< of the video reports with a partner at that height, 0..1
        bool isPitch;   ///< whether a wrong pitch explains the differences at least as well
    };
    /// @return the height when all numbers are read as stated; nothing without pairs of similar
    ///         bearing
    std::optional<Height> height() const;

private:
    /// Position of a report relative to the camera: bearing [radians], and the logarithm of
    /// distance divided by stated camera height.
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
        std::uint64_t video;  ///< running number of the video report
        double bearingError;
        double logRatio;  ///< of the distance by radar over that by video
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
    std::vector<VoteGrid> votes_;  ///< by index of the reading
    std::vector<Pair> pairs_;
    std::uint64_t keptOneOf_ = 1;
};

}  // namespace Workbench
