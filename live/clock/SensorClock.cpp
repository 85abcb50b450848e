// SPDX-License-Identifier: Apache-2.0
#include "live/clock/SensorClock.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace Veskar::Live {
namespace {

using std::chrono::nanoseconds;
using Seconds = std::chrono::duration<double>;

constexpr std::chrono::microseconds resolution(1);

/// A frame that waited longer somewhere is taken for one with a wrong stamp, s.
constexpr double longestWait = 60.0;

/// Further away the difference of two times may be none: a century, s.
constexpr double longestDifference = 3.0e9;

nanoseconds toNanoseconds(double seconds) {
    return std::chrono::round<nanoseconds>(Seconds(seconds));
}

double toSeconds(nanoseconds duration) {
    return Seconds(duration).count();
}

std::string inSeconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", seconds);
    return text;
}

/// @return "3600.000 s ahead of REFERENCE"
std::string inWords(double ahead, const char* reference) {
    return inSeconds(std::abs(ahead)) + (ahead < 0.0 ? " behind " : " ahead of ") + reference;
}

}  // namespace

SensorClock::SensorClock(Options options, Faults& faults)
    : options_(std::move(options)), faults_(faults), policy_(options_.policy) {}

std::optional<SensorClock::Steady> SensorClock::place(Utc stamp, const ArrivalTime& arrival) {
    const double difference =
        Seconds(stamp.time_since_epoch()).count() - Seconds(arrival.utc.time_since_epoch()).count();
    if (std::abs(difference) > longestDifference) {
        ++status_.stray;
        faults_.report(options_.sensor + ": left out a frame with a wrong time",
                       "more than a lifetime from now");
        return std::nullopt;
    }
    // By the steady clock, on which the system clock does not step.
    const nanoseconds lag = arrival.steady.time_since_epoch() - stamp.time_since_epoch();
    if (!base_) {
        base_ = lag;
    }
    const double relative = toSeconds(lag - *base_);
    const double before = estimator_.leastLag();
    const OffsetEstimator::Verdict verdict =
        estimator_.add(relative, toSeconds(arrival.steady.time_since_epoch()));
    const double excess = relative - before;
    if (verdict == OffsetEstimator::Verdict::Far && (excess < 0.0 || excess > longestWait)) {
        ++status_.stray;
        faults_.report(options_.sensor + ": left out a frame with a wrong time",
                       inWords(-excess, "those before"));
        return std::nullopt;
    }
    if (verdict == OffsetEstimator::Verdict::NewBase) {
        ++status_.steps;
        faults_.report(options_.sensor + ": its clock has been set", inWords(-excess, "before"));
        newest_.reset();
        lastStamp_ = stamp;
        isWarned_ = false;
    }
    judgeOffset(arrival);

    const Steady byArrivals(stamp.time_since_epoch() + *base_ +
                            toNanoseconds(estimator_.leastLag() - options_.latency));
    const Steady byHostClock = arrival.steady - (arrival.utc - stamp);
    status_.isByHostClock = options_.isSynchronised && std::abs(status_.offset) <= options_.limit;
    const Steady wanted = status_.isByHostClock ? byHostClock : byArrivals;

    const Irregularity irregularity = irregularityOf(stamp, arrival.steady - wanted);
    const bool isTaken = policy_.takes(irregularity);
    status_.irregular = policy_.counts();
    newest_ = newest_ ? std::max(*newest_, stamp) : stamp;
    return isTaken ? placeBehindLast(stamp, wanted, arrival.steady, irregularity) : std::nullopt;
}

Irregularity SensorClock::irregularityOf(Utc stamp, Nanoseconds delay) const {
    if (newest_ && stamp <= *newest_) {
        return stamp == *newest_ ? Irregularity::Repeated : Irregularity::Reordered;
    }
    return toSeconds(delay) > policy_.lateAfter() ? Irregularity::Late : Irregularity::None;
}

std::optional<SensorClock::Steady> SensorClock::placeBehindLast(Utc stamp, Steady wanted,
                                                                Steady arrived,
                                                                Irregularity irregularity) {
    using std::chrono::microseconds;
    Steady time = wanted;
    if (last_) {
        const bool isInOrder =
            irregularity == Irregularity::None || irregularity == Irregularity::Late;
        const nanoseconds advance = isInOrder ? (stamp - lastStamp_) / 2 : nanoseconds(0);
        time = std::max(time, *last_ + std::max<nanoseconds>(advance, resolution));
    }
    time = Steady(std::chrono::floor<microseconds>(std::min(time, arrived).time_since_epoch()));
    if (last_ && time <= *last_) {
        ++status_.unplaced;
        return std::nullopt;
    }
    last_ = time;
    lastStamp_ = stamp;
    ++status_.taken;
    return time;
}

/// Warns once of a clock that is too far off, until it has been right again.
void SensorClock::judgeOffset(const ArrivalTime& arrival) {
    const nanoseconds hosts = arrival.utc.time_since_epoch() - arrival.steady.time_since_epoch();
    status_.offset = options_.latency - toSeconds(*base_ + hosts) - estimator_.leastLag();
    status_.jitter = estimator_.jitter();
    status_.isSettled = estimator_.isSettled();
    if (!status_.isSettled) {
        return;
    }
    const bool isOff = std::abs(status_.offset) > options_.limit;
    if (isOff && !isWarned_) {
        faults_.report(
            options_.sensor + ": its clock is off",
            inWords(status_.offset, "this host's") + ", jitter " + inSeconds(status_.jitter));
    }
    isWarned_ = isOff;
}

}  // namespace Veskar::Live
