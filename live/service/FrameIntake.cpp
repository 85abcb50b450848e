// SPDX-License-Identifier: Apache-2.0
#include "live/service/FrameIntake.h"

#include <veskar-host/InputError.h>

#include "host/recording/FrameRounding.h"

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace Veskar::Live {
namespace {

double classProbability(const Host::Report& report) {
    if (const auto* video = std::get_if<Host::VideoReport>(&report)) {
        return video->labels.objectClass.probability;
    }
    if (const auto* radar = std::get_if<Host::RadarReport>(&report)) {
        return radar->objectClass.probability;
    }
    return std::get<Host::ReadyEstimate>(report).labels.objectClass.probability;
}

bool isMoreProbable(const Host::Report& a, const Host::Report& b) {
    const Host::ReportBase& first = Host::baseOf(a);
    const Host::ReportBase& second = Host::baseOf(b);
    return std::make_tuple(!first.confirmed, first.coasting, -classProbability(a)) <
           std::make_tuple(!second.confirmed, second.coasting, -classProbability(b));
}

}  // namespace

std::optional<Host::SensorFrame> FrameIntake::take(Host::SensorFrame frame, Steady now) {
    leaveOutImprobable(frame);
    frame.received = clock(now);
    try {
        Host::SensorFrame rounded = frame;
        if (!Host::Internal::roundAsRecorded(rounded)) {
            rounded = Host::parseSensorFrame(Host::toJsonLine(frame));
        }
        order_.check(rounded);
        order_.take(rounded);
        ++counts_.taken;
        counts_.reports += rounded.tracks.size();
        return rounded;
    } catch (const Host::InputError& error) {
        ++counts_.refused;
        faults_.report(std::string("left out a frame of ") + Host::sourceName(frame.source),
                       error.what());
        return std::nullopt;
    }
}

double FrameIntake::clock(Steady now) {
    using std::chrono::microseconds;
    const auto since = std::chrono::floor<microseconds>(now.time_since_epoch()).count();
    last_ = std::max<std::int64_t>(last_, since);
    return static_cast<double>(last_) / 1e6;
}

void FrameIntake::leaveOutImprobable(Host::SensorFrame& frame) {
    if (frame.tracks.size() <= mostReports) {
        return;
    }
    const std::size_t surplus = frame.tracks.size() - mostReports;
    std::stable_sort(frame.tracks.begin(), frame.tracks.end(), isMoreProbable);
    frame.tracks.resize(mostReports);
    counts_.reportsLeftOut += surplus;
    faults_.report(std::string("left out reports of ") + Host::sourceName(frame.source),
                   std::to_string(surplus) + " more than " + std::to_string(mostReports));
}

}  // namespace Veskar::Live
