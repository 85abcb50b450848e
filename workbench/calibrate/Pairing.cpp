// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Pairing.h"

#include "calibrate/VideoSmoothing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <Eigen/Cholesky>

namespace Workbench {
namespace {

/// Half the span of rates, and the age from which video's trackers have settled, s.
constexpr double halfRateSpan = 0.5;
constexpr double settling = 1.0;
/// Another track must be farther away by this share of the gate.
constexpr double clearance = 0.5;
constexpr int leastMeetings = 4;
constexpr double leastShare = 0.6;
constexpr double clusterLength = 10.0;    // s
constexpr double timeBlockLength = 20.0;  // s
/// Where the camera looks down too steeply, or past the object, a box tells little.
constexpr double nearestRange = 3.0;  // m

/// Errors of boxes: of an edge, image units; of the foot point across and along, as shares of the
/// box's height.
constexpr double edgeStd = 0.008;
constexpr double acrossShare = 0.03;
constexpr double alongShare = 0.05;
/// Slower objects count as standing, m/s.
constexpr double leastSpeed = 0.3;
/// Where objects accelerate more in the image, video's tracks fall behind too far to be corrected,
/// standard deviations of the box per s^2.
constexpr double largestAcceleration = 20.0;

/// A track of video at one time.
struct VideoLook {
    std::size_t history;
    Eigen::Vector4d box;
    std::optional<Eigen::Vector2d> rate;  ///< nothing at either end of the history
    Eigen::Vector2d angles;
};

struct NearPair {
    std::size_t look;
    std::size_t video;
    double distance;  ///< in gates
};

using Tracks = std::pair<std::size_t, std::size_t>;  ///< histories of radar and video

/// Two nearest of one track.
struct Nearest {
    double first = 1e300;
    double second = 1e300;
    void add(double distance) {
        second = std::min(second, std::max(first, distance));
        first = std::min(first, distance);
    }
};

class ScenePairing {
public:
    ScenePairing(const Installation& stated, const Placement& placement,
                 const CalibrationScene& scene, double gate)
        : model_(stated, placement),
          lag_(placement[indexOf(MountingParameter::Lag)]),
          drift_(placement[indexOf(MountingParameter::Drift)]),
          scene_(scene),
          gate_(gate),
          middle_(scene.middle()) {}

    std::vector<CalibrationSample> samples(std::size_t firstBlock,
                                           std::map<std::array<std::size_t, 3>, std::size_t>& ids) {
        for (const Moment& moment : scene_.moments) {
            meet(moment);
        }
        const std::set<Tracks> lasting = lastingPairs();
        std::vector<CalibrationSample> result;
        for (const auto& [sample, tracks] : found_) {
            if (lasting.count(tracks) == 0) {
                continue;
            }
            const double passed = sample.heard.time - scene_.moments.front().time;
            const std::array<std::size_t, 3> key{
                firstBlock + static_cast<std::size_t>(passed / clusterLength), tracks.first,
                tracks.second};
            result.push_back(sample);
            result.back().cluster = ids.try_emplace(key, ids.size()).first->second;
            result.back().timeBlock =
                firstBlock + static_cast<std::size_t>(passed / timeBlockLength);
        }
        return result;
    }

private:
    /// @return pairs that were each other's nearest for most of the time that both tracks existed
    std::set<Tracks> lastingPairs() const {
        std::map<std::size_t, std::vector<double>> times;  // of the radar's tracks
        for (const Moment& moment : scene_.moments) {
            for (const RadarLook& look : moment.looks) {
                times[look.history].push_back(moment.time);
            }
        }
        std::set<Tracks> lasting;
        for (const auto& [tracks, paired] : paired_) {
            const VideoHistory& video = scene_.sightings.video()[tracks.second];
            const std::vector<double>& heard = times.at(tracks.first);
            const auto together = std::count_if(heard.begin(), heard.end(), [&](double time) {
                return video.at(time - lagAt(time)).has_value();
            });
            if (paired >= leastMeetings && paired > leastShare * static_cast<double>(together)) {
                lasting.insert(tracks);
            }
        }
        return lasting;
    }

    double lagAt(double time) const { return lag_ + drift_ * (time - middle_); }

    std::vector<VideoLook> videoAt(double time) const {
        std::vector<VideoLook> result;
        const std::vector<VideoHistory>& histories = scene_.sightings.video();
        for (std::size_t i = 0; i < histories.size(); ++i) {
            const std::optional<Eigen::Vector4d> box = histories[i].at(time);
            if (!box) {
                continue;
            }
            VideoLook look{i, *box, std::nullopt, model_.anglesOf(box->head<2>())};
            const auto before = histories[i].at(time - halfRateSpan);
            const auto after = histories[i].at(time + halfRateSpan);
            if (before && after && histories[i].at(time - settling)) {
                look.rate = (*after - *before).head<2>() / (2.0 * halfRateSpan);
            }
            result.push_back(look);
        }
        return result;
    }

    void meet(const Moment& moment) {
        const double lag = lagAt(moment.time);
        const std::vector<VideoLook> videos = videoAt(moment.time - lag);
        std::vector<NearPair> candidates;
        std::vector<Nearest> ofLook(moment.looks.size());
        std::vector<Nearest> ofVideo(videos.size());
        for (std::size_t i = 0; i < moment.looks.size(); ++i) {
            const RadarLook& look = moment.looks[i];
            const Eigen::Vector2d place = model_.reflection(look.sighting);
            const Eigen::Vector2d coarse = model_.anglesOfGround(place);
            for (std::size_t j = 0; j < videos.size(); ++j) {
                const double distance = distanceOf(look, place, coarse, videos[j]);
                if (distance < 1.0 + clearance) {
                    candidates.push_back({i, j, distance});
                    ofLook[i].add(distance);
                    ofVideo[j].add(distance);
                }
            }
        }
        for (const NearPair& pair : candidates) {
            const double clear = pair.distance + clearance;
            const bool isMutual = pair.distance < 1.0 && pair.distance <= ofLook[pair.look].first &&
                                  pair.distance <= ofVideo[pair.video].first &&
                                  ofLook[pair.look].second > clear &&
                                  ofVideo[pair.video].second > clear;
            if (isMutual) {
                keep(moment.looks[pair.look], videos[pair.video], lag);
            }
        }
    }

    /// @return in gates; infinite when far away
    double distanceOf(const RadarLook& look, const Eigen::Vector2d& place,
                      const Eigen::Vector2d& coarse, const VideoLook& video) const {
        constexpr double reach = 4.0;
        const Eigen::Vector2d difference = video.angles - coarse;
        if (!(difference.cwiseAbs().maxCoeff() < reach * gate_)) {
            return 1e300;
        }
        const auto cuboid = cuboidOf(look, classOf(video));
        if (!cuboid) {
            return 1e300;
        }
        const Eigen::Vector2d expected = model_.anglesOf(model_.middleAndBottom(place, *cuboid));
        return (video.angles - expected).cwiseAbs().maxCoeff() / gate_;
    }

    const std::string& classOf(const VideoLook& video) const {
        return scene_.sightings.video()[video.history].className();
    }

    void keep(const RadarLook& look, const VideoLook& video, double lag) {
        const Tracks tracks{look.history, video.history};
        ++paired_[tracks];
        if (!look.isSteady || !video.rate || look.sighting.range < nearestRange) {
            return;
        }
        CalibrationSample sample;
        sample.heard = look.sighting;
        sample.cuboid = *cuboidOf(look, classOf(video));
        sample.seen = video.box.head<2>();
        // The rate of what stands is noise, and would pass for a lag.
        sample.seenRate = isMoving(look) ? *video.rate : Eigen::Vector2d::Zero();
        sample.assumedLag = lag;
        sample.sinceMiddle = look.sighting.time - middle_;
        const double height = video.box[3];
        sample.acceleration = acceleration(look, sample.cuboid);
        const Eigen::Vector2d variance(edgeStd * edgeStd + std::pow(acrossShare * height, 2),
                                       edgeStd * edgeStd + std::pow(alongShare * height, 2));
        const Eigen::Matrix2d covariance = model_.covarianceOf(look.sighting, sample.cuboid) +
                                           Eigen::Matrix2d(variance.asDiagonal());
        sample.whitening = whiteningOf(covariance);
        // NaN does not compare.
        if ((sample.whitening * sample.acceleration).norm() < largestAcceleration) {
            found_.emplace_back(sample, tracks);
        }
    }

    static bool isMoving(const RadarLook& look) {
        return look.hasHeading && look.speed > leastSpeed;
    }

    Eigen::Matrix2d whiteningOf(const Eigen::Matrix2d& covariance) const {
        if (!scene_.hasBearings) {
            return Eigen::Vector2d(0.0, 1.0 / std::sqrt(covariance(1, 1))).asDiagonal();
        }
        return covariance.llt().matrixL().solve(Eigen::Matrix2d::Identity());
    }

    /// Acceleration in the image, as far as video's tracker has followed it, of an object that
    /// moves straight over the ground.
    Eigen::Vector2d acceleration(const RadarLook& look, const Cuboid& cuboid) const {
        if (!look.hasHeading) {
            return Eigen::Vector2d::Zero();
        }
        constexpr double step = 0.1;  // s
        const double direction = model_.radarYaw() + look.heading;
        const Eigen::Vector2d velocity =
            look.speed * Eigen::Vector2d(std::cos(direction), std::sin(direction));
        const Eigen::Vector2d place = model_.reflection(look.sighting) - smoothingDelay * velocity;
        const Eigen::Vector2d way = step * velocity;
        return (model_.middleAndBottom(place + way, cuboid) +
                model_.middleAndBottom(place - way, cuboid) -
                2.0 * model_.middleAndBottom(place, cuboid)) /
               (step * step);
    }

    ObjectModel model_;
    double lag_;
    double drift_;
    const CalibrationScene& scene_;
    double gate_;
    double middle_;
    std::map<Tracks, int> paired_;  ///< how often they were each other's nearest
    std::vector<std::pair<CalibrationSample, Tracks>> found_;
};

}  // namespace

std::vector<CalibrationSample> pairSamples(const Installation& stated, const Placement& placement,
                                           const std::vector<CalibrationScene>& scenes,
                                           double gate) {
    std::vector<CalibrationSample> result;
    std::map<std::array<std::size_t, 3>, std::size_t> clusters;
    std::size_t firstBlock = 0;
    for (const CalibrationScene& scene : scenes) {
        const auto samples =
            ScenePairing(stated, placement, scene, gate).samples(firstBlock, clusters);
        result.insert(result.end(), samples.begin(), samples.end());
        constexpr std::size_t blocksOfLongest = 1000000;
        firstBlock += blocksOfLongest;
    }
    return result;
}

}  // namespace Workbench
