// SPDX-License-Identifier: Apache-2.0
#include "check/Agreement.h"

#include "check/Median.h"
#include "check/TrackGap.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Workbench {
namespace {

constexpr double sampleInterval = 0.2;  // seconds
/// How long a frame waits for frames of the other sensor, seconds.
constexpr double frameMemory = 4.0;
/// In frames with more pairs of reports, video reports are thinned out.
constexpr std::size_t mostPairsOfFrame = 4000;
constexpr std::size_t mostPairs = 40000;

/// Windows to either side of the ratio 1: readings are compared where distances agree within a
/// third; a wrong height may be off by any factor.
constexpr int ratioWindows = 3;
constexpr int heightWindows = 50;

double differenceOf(double bearing, double other) {
    return std::remainder(bearing - other, radians(360.0));
}

bool isUsable(const ReportBase& report) {
    return report.confirmed && !(report.coasting > 0.0);
}

}  // namespace

int Reading::changes() const {
    return (box != BoxForm::Stated ? 1 : 0) + (angles != AngleForm::Stated ? 1 : 0) +
           (azimuth != AzimuthForm::Stated ? 1 : 0);
}

Agreement::Agreement(const RecordingHeader& header)
    : resolution_(header.camera.resolution),
      origin_(header.camera.mounting.position.head<2>()),
      cameraHeight_(header.camera.mounting.position[2]),
      radar_(header.radar, {}),
      votes_(boxForms.size() * angleForms.size() * azimuthForms.size(), VoteGrid(ratioWindows)) {
    for (const AngleForm form : angleForms) {
        const std::optional<CameraSetup> camera = readAs(form, header.camera);
        projections_.push_back(camera ? std::optional<Projection>(camera->build()) : std::nullopt);
    }
}

std::size_t Agreement::indexOf(const Reading& reading) const {
    return (static_cast<std::size_t>(reading.box) * angleForms.size() +
            static_cast<std::size_t>(reading.angles)) *
               azimuthForms.size() +
           static_cast<std::size_t>(reading.azimuth);
}

void Agreement::add(const SensorFrame& frame) {
    if (frame.source == Veskar::Radar) {
        RadarPoints points{frame.time, {}};
        for (const Report& report : frame.tracks) {
            const auto* seen = std::get_if<RadarReport>(&report);
            if (seen != nullptr && isUsable(*seen)) {
                points.points.push_back({seen->id, seen->range, seen->azimuth});
            }
        }
        radarFrames_.push_back(std::move(points));
    } else if (frame.time >= lastSample_ + sampleInterval) {
        lastSample_ = frame.time;
        VideoBoxes boxes{frame.time, {}};
        for (const Report& report : frame.tracks) {
            const auto* seen = std::get_if<VideoReport>(&report);
            if (seen != nullptr && isUsable(*seen)) {
                boxes.boxes.push_back(seen->box);
            }
        }
        pending_.push_back(std::move(boxes));
    }
    work();
}

void Agreement::work() {
    while (!pending_.empty() && !radarFrames_.empty() &&
           pending_.front().time <= radarFrames_.back().time) {
        compare(pending_.front(), radarAt(pending_.front().time));
        pending_.pop_front();
    }
    const double latest = std::max(radarFrames_.empty() ? -1e300 : radarFrames_.back().time,
                                   pending_.empty() ? -1e300 : pending_.back().time);
    while (!radarFrames_.empty() && radarFrames_.front().time < latest - frameMemory) {
        radarFrames_.pop_front();
    }
    while (!pending_.empty() && pending_.front().time < latest - frameMemory) {
        pending_.pop_front();
    }
}

std::vector<Agreement::RadarPoint> Agreement::radarAt(double time) const {
    const auto after =
        std::lower_bound(radarFrames_.begin(), radarFrames_.end(), time,
                         [](const RadarPoints& frame, double t) { return frame.time < t; });
    if (after == radarFrames_.begin() || after == radarFrames_.end() ||
        after->time - std::prev(after)->time > longestTrackGap) {
        return {};
    }
    const RadarPoints& before = *std::prev(after);
    const double share = (time - before.time) / (after->time - before.time);
    std::vector<RadarPoint> result;
    for (const RadarPoint& then : after->points) {
        const auto first = std::find_if(before.points.begin(), before.points.end(),
                                        [&](const RadarPoint& p) { return p.id == then.id; });
        if (first != before.points.end()) {
            const double turn = std::remainder(then.azimuth - first->azimuth, 360.0);
            result.push_back({then.id, first->range + share * (then.range - first->range),
                              first->azimuth + share * turn});
        }
    }
    return result;
}

Agreement::Places Agreement::placesOf(const std::vector<ImageBox>& boxes, BoxForm form,
                                      const Projection& projection) const {
    Places places;
    places.reserve(boxes.size());
    for (const ImageBox& asReported : boxes) {
        const ImageBox box = readAs(form, asReported, resolution_);
        // The foot of an object whose box touches the edge of the image may lie outside the image.
        const bool isWhole =
            box.bottom > -0.97 && box.left > -0.97 && box.right < 0.97 && box.bottom < 0.97;
        if (!isWhole) {
            places.emplace_back();
            continue;
        }
        const Eigen::Vector3d ray = projection.ray(0.5 * (box.left + box.right), box.bottom);
        const double level = ray.head<2>().norm();
        // Closer to the horizon the intersection with the ground is too inaccurate.
        constexpr double flattest = 0.005;
        if (-ray[2] > flattest * level) {
            places.push_back(Place{std::atan2(ray[1], ray[0]), std::log(level / -ray[2])});
        } else {
            places.emplace_back();
        }
    }
    return places;
}

Agreement::Places Agreement::placesOf(const std::vector<RadarPoint>& points,
                                      AzimuthForm form) const {
    Places places;
    places.reserve(points.size());
    for (const RadarPoint& point : points) {
        const Eigen::Vector2d offset =
            radar_.groundPoint(point.range, readAs(form, point.azimuth)).position - origin_;
        places.push_back(Place{std::atan2(offset[1], offset[0]),
                               std::log(std::max(offset.norm(), 0.1) / cameraHeight_)});
    }
    return places;
}

void Agreement::compare(const VideoBoxes& video, const std::vector<RadarPoint>& points) {
    std::vector<ImageBox> boxes = video.boxes;
    if (boxes.size() * points.size() > mostPairsOfFrame) {
        const std::size_t wanted = std::max<std::size_t>(mostPairsOfFrame / points.size(), 1);
        const std::size_t step = (boxes.size() + wanted - 1) / wanted;
        std::vector<ImageBox> some;
        for (std::size_t i = 0; i < boxes.size(); i += step) {
            some.push_back(boxes[i]);
        }
        boxes = std::move(some);
    }
    videoReports_ += boxes.size();
    if (boxes.empty() || points.empty()) {
        return;
    }
    std::vector<Places> byRadar;
    byRadar.reserve(azimuthForms.size());
    for (const AzimuthForm azimuth : azimuthForms) {
        byRadar.push_back(placesOf(points, azimuth));
    }
    for (const AngleForm angles : angleForms) {
        const auto& projection = projections_[static_cast<std::size_t>(angles)];
        if (!projection) {
            continue;
        }
        for (const BoxForm box : boxForms) {
            const Places byVideo = placesOf(boxes, box, *projection);
            for (const AzimuthForm azimuth : azimuthForms) {
                vote(votes_[indexOf({box, angles, azimuth})], byVideo,
                     byRadar[static_cast<std::size_t>(azimuth)]);
            }
            if (indexOf({box, angles, AzimuthForm::Stated}) == 0) {
                keepPairs(byVideo, byRadar[0]);
            }
        }
    }
}

void Agreement::vote(VoteGrid& grid, const Places& videoPlaces, const Places& radarPlaces) const {
    std::uint64_t voter = videoReports_ - videoPlaces.size();
    for (const std::optional<Place>& seen : videoPlaces) {
        ++voter;
        for (const std::optional<Place>& heard : radarPlaces) {
            if (seen && heard) {
                grid.vote(voter, differenceOf(seen->bearing, heard->bearing),
                          heard->logDistance - seen->logDistance);
            }
        }
    }
}

void Agreement::keepPairs(const Places& videoPlaces, const Places& radarPlaces) {
    std::uint64_t video = videoReports_ - videoPlaces.size();
    for (const std::optional<Place>& seen : videoPlaces) {
        ++video;
        if (!seen || video % keptOneOf_ != 0) {
            continue;
        }
        for (const std::optional<Place>& heard : radarPlaces) {
            const double error = differenceOf(seen->bearing, heard->bearing);
            if (std::abs(error) < VoteGrid::bearingLimit()) {
                pairs_.push_back(
                    {video, error, heard->logDistance - seen->logDistance, heard->logDistance});
            }
        }
    }
    if (pairs_.size() > mostPairs) {
        keptOneOf_ *= 2;
        pairs_.erase(std::remove_if(pairs_.begin(), pairs_.end(),
                                    [&](const Pair& pair) { return pair.video % keptOneOf_ != 0; }),
                     pairs_.end());
    }
}

double Agreement::share(const Reading& reading) const {
    return videoReports_ == 0 ? 0.0
                              : static_cast<double>(votes_[indexOf(reading)].most()) /
                                    static_cast<double>(videoReports_);
}

std::optional<Agreement::Height> Agreement::height() const {
    VoteGrid grid(heightWindows);
    for (const Pair& pair : pairs_) {
        grid.vote(pair.video, pair.bearingError, pair.logRatio);
    }
    if (grid.most() == 0) {
        return std::nullopt;
    }
    const VoteGrid::Window best = grid.best();
    std::vector<Pair> chosen;
    std::copy_if(pairs_.begin(), pairs_.end(), std::back_inserter(chosen),
                 [&](const Pair& pair) { return best.holds(pair.bearingError, pair.logRatio); });
    std::vector<double> ratios;
    ratios.reserve(chosen.size());
    for (const Pair& pair : chosen) {
        ratios.push_back(pair.logRatio);
    }
    const double logFactor = medianOf(ratios);
    // Whether a height or a pitch error explains the differences of the depressions better.
    std::vector<double> byHeight;
    std::vector<double> byPitch;
    byHeight.reserve(chosen.size());
    byPitch.reserve(chosen.size());
    for (const Pair& pair : chosen) {
        const double seen = std::atan(std::exp(pair.logRatio - pair.logDistance));
        byHeight.push_back(std::abs(seen - std::atan(std::exp(logFactor - pair.logDistance))));
        byPitch.push_back(seen - std::atan(std::exp(-pair.logDistance)));
    }
    const double pitch = medianOf(byPitch);
    for (double& error : byPitch) {
        error = std::abs(error - pitch);
    }
    return Height{std::exp(logFactor),
                  static_cast<double>(grid.most() * keptOneOf_) /
                      static_cast<double>(std::max<std::uint64_t>(videoReports_, 1)),
                  medianOf(byPitch) <= medianOf(byHeight)};
}

}  // namespace Workbench
