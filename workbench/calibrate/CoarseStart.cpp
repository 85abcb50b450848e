// SPDX-License-Identifier: Apache-2.0
#include "calibrate/CoarseStart.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Workbench {
namespace {

/// A cell has half a degree; a window is three by three cells.
const double cell = radians(0.6);
constexpr int yawReach = 20;    // cells
constexpr int pitchReach = 12;  // cells
constexpr std::size_t mostMoments = 400;
constexpr std::size_t mostVotingPairs = 100000;

/// Candidates nearest to the stated values first, so that they win ties.
constexpr std::array lags{0.0,   -0.15, 0.15, -0.3, 0.3,   -0.45, 0.45, -0.6, 0.6,
                          -0.75, 0.75,  -0.9, 0.9,  -1.05, 1.05,  -1.2, 1.2};
constexpr std::array heights{0.0, -0.4, 0.4, -0.8, 0.8};
/// A candidate must exceed the one before by this factor.
constexpr double better = 1.02;

class Votes {
public:
    void clear() { std::fill(cells_.begin(), cells_.end(), 0.0F); }
    void add(double yaw, double pitch) {
        const auto column = static_cast<int>(std::lround(yaw / cell));
        const auto row = static_cast<int>(std::lround(pitch / cell));
        if (std::abs(column) <= yawReach && std::abs(row) <= pitchReach) {
            cells_[place(column, row)] += 1.0F;
        }
    }
    struct Best {
        double votes = 0.0;
        double yaw = 0.0;
        double pitch = 0.0;
    };
    Best best() const {
        Best best;
        for (int row = -pitchReach; row <= pitchReach; ++row) {
            for (int column = -yawReach; column <= yawReach; ++column) {
                const double votes = around(column, row);
                if (votes > best.votes) {
                    best = {votes, column * cell, row * cell};
                }
            }
        }
        return best;
    }

private:
    static constexpr std::size_t width = 2 * yawReach + 3;
    static std::size_t place(int column, int row) {
        return static_cast<std::size_t>(row + pitchReach + 1) * width +
               static_cast<std::size_t>(column + yawReach + 1);
    }
    double around(int column, int row) const {
        double sum = 0.0;
        for (int r = row - 1; r <= row + 1; ++r) {
            for (int c = column - 1; c <= column + 1; ++c) {
                sum += static_cast<double>(cells_[place(c, r)]);
            }
        }
        return sum;
    }
    std::vector<float> cells_ = std::vector<float>(width * (2 * pitchReach + 3));
};

/// What the radar has at a moment: bearing and distance from the camera.
struct Heard {
    double bearing;
    double distance;
};

class Search {
public:
    Search(const Installation& stated, const std::vector<CalibrationScene>& scenes)
        : model_(stated, Placement::Zero()), scenes_(scenes) {}

    Placement run(CoarseReach reach) {
        const bool isWhole = reach == CoarseReach::Everything;
        double most = 0.0;
        Placement best = Placement::Zero();
        for (std::size_t i = 0; i < (isWhole ? lags.size() : 1); ++i) {
            const double lag = lags[i];
            collect(lag);
            for (std::size_t j = 0; j < (isWhole ? heights.size() : 1); ++j) {
                const double height = heights[j];
                const Votes::Best found = count(height);
                if (found.votes > better * most) {
                    most = found.votes;
                    best[indexOf(MountingParameter::CameraYaw)] = found.yaw;
                    best[indexOf(MountingParameter::CameraPitch)] = found.pitch;
                    best[indexOf(MountingParameter::CameraHeight)] = height;
                    best[indexOf(MountingParameter::Lag)] = lag;
                }
            }
        }
        return best;
    }

private:
    /// Pairs of one moment: what video and radar have at the same true time.
    struct Group {
        std::vector<Eigen::Vector2d> seen;
        std::vector<Heard> heard;
    };

    void collect(double lag) {
        groups_.clear();
        for (const CalibrationScene& scene : scenes_) {
            const std::size_t step = stepOf(scene);
            for (std::size_t i = 0; i < scene.moments.size(); i += step) {
                groups_.push_back(groupOf(scene, scene.moments[i], lag));
            }
        }
    }

    /// @return every how many moments are looked at, of crowded scenes fewer
    std::size_t stepOf(const CalibrationScene& scene) const {
        std::size_t pairs = 0;  // if as many were seen as were heard
        for (const Moment& moment : scene.moments) {
            pairs += moment.looks.size() * moment.looks.size();
        }
        return std::max(scene.moments.size() * scenes_.size() / mostMoments,
                        pairs * scenes_.size() / mostVotingPairs) +
               1;
    }

    Group groupOf(const CalibrationScene& scene, const Moment& moment, double lag) const {
        Group group;
        for (const VideoHistory& history : scene.sightings.video()) {
            if (const auto box = history.at(moment.time - lag)) {
                group.seen.push_back(model_.anglesOf(box->head<2>()));
            }
        }
        for (const RadarLook& look : moment.looks) {
            const Eigen::Vector2d place = model_.reflection(look.sighting);
            group.heard.push_back({model_.anglesOfGround(place)[0],
                                   (place - model_.projection().origin().head<2>()).norm()});
        }
        return group;
    }

    Votes::Best count(double height) {
        votes_.clear();
        const double trueHeight = std::max(model_.projection().origin()[2] + height, 0.1);
        for (const Group& group : groups_) {
            for (const Heard& heard : group.heard) {
                const double depression = std::atan2(trueHeight, heard.distance);
                for (const Eigen::Vector2d& seen : group.seen) {
                    // A camera turned to the left by more than stated sees objects too far right.
                    votes_.add(heard.bearing - seen[0], depression - seen[1]);
                }
            }
        }
        return votes_.best();
    }

    ObjectModel model_;
    const std::vector<CalibrationScene>& scenes_;
    std::vector<Group> groups_;
    Votes votes_;
};

}  // namespace

Placement coarseStart(const Installation& stated, const std::vector<CalibrationScene>& scenes,
                      CoarseReach reach) {
    return Search(stated, scenes).run(reach);
}

}  // namespace Workbench
