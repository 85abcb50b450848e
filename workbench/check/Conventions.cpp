// SPDX-License-Identifier: Apache-2.0
#include "check/Conventions.h"

#include <veskar-host/Projection.h>

#include "HostLibrary.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// With fewer values, displacements or partners nothing is concluded.
constexpr std::uint64_t fewestValues = 50;
constexpr std::uint64_t fewestWays = 6;
constexpr double fewestPartners = 20.0;
/// A reading must increase the share of video reports with a partner by this much.
constexpr double margin = 0.08;
/// Below this share of video reports with a partner, the reading has no support.
constexpr double hardlyAny = 0.3;

Convention misplacing(std::string name, std::string key, std::string message) {
    return {std::move(name), true, {Severity::Warning, 0, std::move(key), "", std::move(message)}};
}

Convention ofMotion(std::string name, std::string key, std::string message) {
    return {std::move(name), false, {Severity::Warning, 0, std::move(key), "", std::move(message)}};
}

int percent(double share) {
    return static_cast<int>(std::lround(100.0 * share));
}

bool isWithin(double value, double least, double most) {
    return value > least && value < most;
}

}  // namespace

void Conventions::Span::add(double value) {
    first = std::min(first, value);
    last = std::max(last, value);
}

Conventions::Conventions(const RecordingHeader& header)
    : camera_(header.camera.mounting),
      canBeRadians_(readAs(AngleForm::Radians, header.camera).has_value()),
      places_(header),
      motion_(header) {}

void Conventions::add(const SensorFrame& frame) {
    addTime(frame);
    addRanges(frame);
    places_.add(frame);
    if (frame.source == Veskar::Radar) {
        motion_.add(frame);
    }
}

void Conventions::add(const RefusedFrame& refused) {
    if (refused.cause == RefusedFrame::Cause::Box) {
        add(refused.frame);
    } else {
        addTime(refused.frame);
        addRanges(refused.frame);
    }
}

void Conventions::addTime(const SensorFrame& frame) {
    times_[frame.source == Veskar::Radar ? 1 : 0].add(frame.time);
}

void Conventions::addRanges(const SensorFrame& frame) {
    for (const Report& report : frame.tracks) {
        if (const auto* seen = std::get_if<VideoReport>(&report)) {
            const ImageBox& box = seen->box;
            const auto [least, most] = std::minmax({box.left, box.bottom, box.right, box.top});
            ++boxes_.count;
            // Boxes may extend beyond the edge of the image.
            boxes_.inUnit += least > -0.1 && most < 1.1 ? 1 : 0;
            boxes_.farOutside += std::max(-least, most) > 2.0 ? 1 : 0;
            boxes_.upsideDown += box.top < box.bottom ? 1 : 0;
            boxes_.u.add(box.left);
            boxes_.u.add(box.right);
            boxes_.v.add(box.bottom);
            boxes_.v.add(box.top);
        } else if (const auto* heard = std::get_if<RadarReport>(&report)) {
            ++azimuths_;
            largestAzimuth_ = std::max(largestAzimuth_, std::abs(heard->azimuth));
            largestDirection_ =
                std::max(largestDirection_, std::abs(heard->direction.value_or(0.0)));
        }
    }
}

bool Conventions::isPossible(BoxForm form) const {
    const bool isPixels = 2 * boxes_.farOutside > boxes_.count;
    switch (form) {
        case BoxForm::Pixels:
            return isPixels;
        case BoxForm::Unit:
        case BoxForm::UnitDownward:
            return !isPixels && boxes_.count >= fewestValues &&
                   10 * boxes_.inUnit > 9 * boxes_.count;
        default:
            return !isPixels;
    }
}

bool Conventions::isPossible(AzimuthForm form) const {
    const bool isRadians = form == AzimuthForm::Radians || form == AzimuthForm::MirroredRadians;
    return !isRadians || (azimuths_ >= fewestValues && largestAzimuth_ < radians(180.0) + 1e-3);
}

bool Conventions::isPossible(DirectionForm form) const {
    return form != DirectionForm::Radians ||
           (azimuths_ >= fewestValues && largestDirection_ < radians(360.0) + 1e-3);
}

bool Conventions::explains(double share) const {
    return share > places_.share({}) + margin &&
           share * static_cast<double>(places_.asked()) > fewestPartners;
}

std::string Conventions::gain(double share) const {
    return fmt::format(
        "then {} % of the video's reports have a radar report where they stand, as "
        "it is {} %",
        percent(share), percent(places_.share({})));
}

Reading Conventions::bestReading() const {
    Reading best;
    double bestScore = places_.share(best);
    for (const BoxForm box : boxForms) {
        for (const AngleForm angles : angleForms) {
            for (const AzimuthForm azimuth : azimuthForms) {
                const bool isCandidate = isPossible(box) && isPossible(azimuth) &&
                                         (angles == AngleForm::Stated || canBeRadians_);
                const Reading reading{box, angles, azimuth};
                const double score = places_.share(reading) - margin * reading.changes();
                if (isCandidate && score > bestScore) {
                    best = reading;
                    bestScore = score;
                }
            }
        }
    }
    return explains(places_.share(best)) ? best : Reading{};
}

std::vector<Convention> Conventions::found() const {
    std::vector<Convention> list;
    judgeTime(list);
    Reading reading = bestReading();
    if (judgeHeight(reading, list)) {
        reading = {};
    }
    judgeBoxes(reading, list);
    judgeAngles(reading, list);
    judgeAzimuth(reading, list);
    judgeDirection(reading, list);
    judgeSpeed(reading.azimuth, list);
    return list;
}

void Conventions::judgeTime(std::vector<Convention>& list) const {
    constexpr double hour = 3600.0;
    constexpr double earliestUnix = 3e8;
    const auto& [video, radar] = times_;
    if (video.isEmpty() || radar.isEmpty() ||
        std::max(video.first - radar.last, radar.first - video.last) < hour) {
        return;
    }
    const bool radarIsLater = radar.first > video.last;
    const bool isUnix = std::max(radar.first, video.first) > earliestUnix;
    list.push_back(misplacing(
        "time-bases", "time",
        fmt::format(
            "radar frames run from {:.1f} to {:.1f} s, video frames from {:.1f} to {:.1f} "
            "s: the sensors use different clocks{}; stamp both with one clock, or the "
            "fusion never sees them together",
            radar.first, radar.last, video.first, video.last,
            isUnix ? fmt::format(", the {} UNIX time and the {} the time since a start",
                                 radarIsLater ? "radar" : "video", radarIsLater ? "video" : "radar")
                   : "")));
}

/// Whether a wrong camera height explains more than the best other reading.
bool Conventions::judgeHeight(const Reading& best, std::vector<Convention>& list) const {
    const std::optional<Agreement::Height> height = places_.height();
    if (!height || height->isPitch || isWithin(height->factor, 0.77, 1.3) ||
        !explains(height->share) || height->share <= places_.share(best)) {
        return false;
    }
    list.push_back(misplacing(
        "camera-height", "camera.position[2]",
        fmt::format("the camera hangs {:.3g} times as high as stated: set it to {:.2f} instead of "
                    "{:.2f}; {}",
                    height->factor, height->factor * camera_.position[2], camera_.position[2],
                    gain(height->share))));
    return true;
}

void Conventions::judgeBoxes(const Reading& reading, std::vector<Convention>& list) const {
    const BoxForm form = reading.box;
    const auto ranges = [&] {
        return fmt::format(
            "boxes lie between {:.4g} and {:.4g} across and between {:.4g} and "
            "{:.4g} upright",
            boxes_.u.first, boxes_.u.last, boxes_.v.first, boxes_.v.last);
    };
    const bool isUpsideDown = 2 * boxes_.upsideDown > boxes_.count;
    const bool fillsUnit = isPossible(BoxForm::Unit) && boxes_.u.last - boxes_.u.first > 0.6 &&
                           boxes_.v.last - boxes_.v.first > 0.4 && places_.share({}) < hardlyAny;
    if (boxes_.count > 0 && isPossible(BoxForm::Pixels)) {
        list.push_back(misplacing(
            "box-pixels", "box",
            ranges() + ": these are pixels; divide by half the resolution and subtract 1, and "
                       "count v upward, so that the image spans -1..1"));
    } else if (form == BoxForm::Unit || form == BoxForm::UnitDownward ||
               (form == BoxForm::Stated && fillsUnit)) {
        list.push_back(misplacing(
            "box-unit-range", "box",
            ranges() +
                ": these are fractions of the image, 0..1, where -1..1 is expected; double "
                "them and subtract 1" +
                (form == BoxForm::UnitDownward || isUpsideDown ? ", and count v upward" : "")));
    } else if (form == BoxForm::Downward || isUpsideDown) {
        list.push_back(misplacing(
            "v-downward", "box",
            "v counts downward here, but upward in the format, from -1 at the lower edge of the "
            "image to 1; change the sign of bottom, top and the velocity's v: " +
                (isUpsideDown ? "the top is below the bottom" : gain(places_.share(reading)))));
    }
}

void Conventions::judgeAngles(const Reading& reading, std::vector<Convention>& list) const {
    if (reading.angles == AngleForm::Radians) {
        list.push_back(misplacing(
            "camera-angles-radians", "camera.rotation",
            fmt::format("these are radians, but degrees are expected: set pitch to {:.2f} instead "
                        "of {:.4g}, yaw to {:.2f}, roll to {:.2f}; {}",
                        degrees(camera_.pitch), camera_.pitch, degrees(camera_.yaw),
                        degrees(camera_.roll), gain(places_.share(reading)))));
    }
}

void Conventions::judgeAzimuth(const Reading& reading, std::vector<Convention>& list) const {
    const std::string why = gain(places_.share(reading));
    if (reading.azimuth == AzimuthForm::Mirrored) {
        list.push_back(misplacing("azimuth-sign", "azimuth",
                                  "grows to the left here, but to the right (clockwise) in the "
                                  "format; change its sign: " +
                                      why));
    } else if (reading.azimuth == AzimuthForm::FromTheRight) {
        list.push_back(misplacing("azimuth-from-right", "azimuth",
                                  "counts counter-clockwise from the right-hand side here, but "
                                  "clockwise from forward in the format; write 90 minus it: " +
                                      why));
    } else if (reading.azimuth != AzimuthForm::Stated) {
        list.push_back(misplacing(
            "azimuth-radians", "azimuth",
            fmt::format("none exceeds {:.3f}: these are radians, but degrees are expected; "
                        "multiply by 57.29578{}: {}",
                        largestAzimuth_,
                        reading.azimuth == AzimuthForm::MirroredRadians
                            ? " and change the sign, they grow to the left"
                            : "",
                        why)));
    }
}

void Conventions::judgeDirection(const Reading& reading, std::vector<Convention>& list) const {
    const AzimuthForm azimuth = reading.azimuth;
    const double stated = motion_.share(azimuth, DirectionForm::Stated);
    DirectionForm best = DirectionForm::Stated;
    for (const DirectionForm form : directionForms) {
        if (isPossible(form) && motion_.share(azimuth, form) > motion_.share(azimuth, best)) {
            best = form;
        }
    }
    const double share = motion_.share(azimuth, best);
    // A smaller gain suffices for radians, which the range of the values supports, too.
    const double needed = stated + (best == DirectionForm::Radians ? 0.15 : 0.3);
    if (motion_.ways(azimuth) < fewestWays || share < 0.6 || share < needed) {
        return;
    }
    const std::string why =
        fmt::format("then {} % of the radar's tracks move where they say, as it is {} %",
                    percent(share), percent(stated));
    if (best == DirectionForm::Turned) {
        list.push_back(ofMotion("direction-turned", "direction",
                                "points where objects come from, it must point where they go; add "
                                "180 degrees: " +
                                    why));
    } else if (best == DirectionForm::Radians) {
        list.push_back(ofMotion(
            "direction-radians", "direction",
            fmt::format("none exceeds {:.3f}: these are radians, but degrees are expected; "
                        "multiply by 57.29578: {}",
                        largestDirection_, why)));
    } else if (azimuth == AzimuthForm::Stated &&
               places_.share({reading.box, reading.angles, AzimuthForm::Mirrored}) >
                   places_.share(reading) - 2.0 * margin) {
        // In symmetrical scenes, and without video, it is undecided which of both is wrong.
        list.push_back(misplacing(
            "azimuth-sign", "azimuth",
            "azimuth and direction contradict each other: one of them grows to the left, and both "
            "must grow to the right (clockwise); change the sign of the azimuth, or else of the "
            "direction: " +
                why));
    } else {
        list.push_back(ofMotion("direction-sign", "direction",
                                "grows to the left here, but to the right (clockwise) in the "
                                "format; change its sign: " +
                                    why));
    }
}

void Conventions::judgeSpeed(AzimuthForm azimuth, std::vector<Convention>& list) const {
    const auto unitOf = [](double factor) {
        return isWithin(factor, 2.9, 4.4)   ? "; these are km/h, divide by 3.6"
               : isWithin(factor, 2.1, 2.6) ? "; these may be miles per hour, divide by 2.237"
                                            : "";
    };
    constexpr auto text =
        "the radar's tracks move at {:.2g} m/s for every 1 that they report, over "
        "{} ways of a second; m/s are expected{}";
    const std::optional<double> speed = motion_.speedFactor(azimuth);
    if (speed && motion_.ways(azimuth) >= fewestWays && !isWithin(*speed, 0.6, 1.7)) {
        list.push_back(
            ofMotion("speed-unit", "speed",
                     fmt::format(text, 1.0 / *speed, motion_.ways(azimuth), unitOf(*speed))));
    }
    const std::optional<double> radial = motion_.radialSpeedFactor();
    if (!radial || motion_.radialWays() < fewestWays) {
        return;
    }
    if (*radial < -0.3) {
        list.push_back(ofMotion("radial-speed-sign", "radialSpeed",
                                "is positive for objects that come nearer, but must be positive "
                                "away from the radar; change its sign"));
    }
    if (!isWithin(std::abs(*radial), 0.6, 1.7)) {
        list.push_back(ofMotion("speed-unit", "radialSpeed",
                                fmt::format(text, 1.0 / std::abs(*radial), motion_.radialWays(),
                                            unitOf(std::abs(*radial)))));
    }
}

}  // namespace Workbench
