// SPDX-License-Identifier: Apache-2.0
#include "host/recording/FrameRounding.h"

#include <veskar/Vocabulary.h>

#include "host/reports/JsonLine.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Veskar::Host::Internal {
namespace {

/// Rounds numbers as LineText::addNumber does. The quotient of two whole numbers is the number that
/// is nearest to their decimal fraction, which is what a reader makes of its digits.
class Rounding {
public:
    void round(double& value, int decimals) {
        constexpr double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
        const double power = powers[decimals];
        const double digits = std::nearbyint(std::abs(value) * power);
        isUsual_ =
            isUsual_ && digits < 9e15;  // beyond, and without a number, other digits are written
        const double magnitude = digits / power;
        value = value < 0.0 && digits > 0.0 ? -magnitude : magnitude;
    }
    /// Of a value that readers limit.
    void round(double& value, int decimals, double least, double most) {
        isUsual_ = isUsual_ && value >= least && value <= most;
        round(value, decimals);
    }
    void round(Label& label) {
        if (label.name == Vocabulary::unknown) {
            label.probability = 0.0;
            return;
        }
        isUsual_ = isUsual_ && std::all_of(label.name.begin(), label.name.end(),
                                           [](char c) { return c >= ' ' && c <= '~'; });
        round(label.probability, ratioDecimals, 0.0, 1.0);
    }
    void round(Labels& labels) {
        round(labels.objectClass);
        round(labels.color);
        round(labels.upperClothingColor);
        round(labels.lowerClothingColor);
    }
    void operator()(VideoReport& report) {
        round(static_cast<ReportBase&>(report));
        ImageBox& box = report.box;
        for (double* edge : {&box.left, &box.bottom, &box.right, &box.top}) {
            round(*edge, imageDecimals);
        }
        isUsual_ = isUsual_ && box.left <= box.right && box.bottom <= box.top;
        if (report.velocity) {
            round((*report.velocity)[0], imageDecimals);
            round((*report.velocity)[1], imageDecimals);
        }
        round(report.age, timeDecimals, 0.0, longest);
        round(report.labels);
    }
    void operator()(RadarReport& report) {
        round(static_cast<ReportBase&>(report));
        round(report.range, metreDecimals, 0.0, longest);
        round(report.azimuth, angleDecimals, -360.0, 360.0);
        if (report.speed && report.direction) {
            round(*report.speed, metreDecimals, 0.0, longest);
            round(*report.direction, angleDecimals);
        } else {
            report.speed.reset();
            report.direction.reset();
        }
        if (report.radialSpeed) {
            round(*report.radialSpeed, metreDecimals);
        }
        isUsual_ = isUsual_ && (report.speed || report.radialSpeed);
        round(report.objectClass);
    }
    void operator()(ReadyEstimate&) { isUsual_ = false; }

    bool isUsual() const { return isUsual_; }

private:
    static constexpr double longest = 1e9;

    void round(ReportBase& report) {
        report.coasting = report.coasting > 0.0 ? report.coasting : 0.0;
        round(report.coasting, timeDecimals);
    }

    bool isUsual_ = true;
};

bool isOf(Source source, const Report& report) {
    return source == Radar ? std::holds_alternative<RadarReport>(report)
                           : std::holds_alternative<VideoReport>(report);
}

bool haveDifferentIds(const std::vector<Report>& tracks) {
    std::vector<std::int32_t> ids;
    ids.reserve(tracks.size());
    for (const Report& report : tracks) {
        ids.push_back(baseOf(report).id);
    }
    std::sort(ids.begin(), ids.end());
    return std::adjacent_find(ids.begin(), ids.end()) == ids.end();
}

}  // namespace

bool roundAsRecorded(SensorFrame& frame) {
    Rounding rounding;
    rounding.round(frame.time, timeDecimals);
    rounding.round(frame.received, timeDecimals);
    bool isUsual = frame.source == Radar || frame.source == VideoObject;
    for (Report& report : frame.tracks) {
        isUsual = isUsual && isOf(frame.source, report);
        std::visit(rounding, report);
    }
    return isUsual && rounding.isUsual() && haveDifferentIds(frame.tracks);
}

}  // namespace Veskar::Host::Internal
