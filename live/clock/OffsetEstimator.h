// SPDX-License-Identifier: Apache-2.0
// How far a sensor's clock is from the host's.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

namespace Veskar::Live {

/// Estimates the constant part of the lag of a sensor's frames: the difference between the time of
/// arrival, by the host's steady clock, and the sensor's stamp.
///
/// # Method
///
/// The lag is the difference of the clocks, which is constant, plus the delay of the frame, which
/// is positive and varies: `lag = difference + delay`. Those frames that met no queue have about
/// the least delay, so the least lags of a while give the difference plus that least delay. This is
/// the minimum filter of NTP (Mills, Martin, Burbank, Kasch: RFC 5905) and of one-way delay
/// measurement (Paxson: On Calibrating Measurements of Packet Transit Times, SIGMETRICS 1998). One
/// stamp in a hundred that is too early must not decide, so a low quantile stands for the minimum.
///
/// The least delay itself cannot be told from the difference of the clocks by one-way messages; who
/// knows it states it (SensorClock::Options::latency).
///
/// The rates of the clocks are not estimated: two quartz clocks drift apart by 100 parts in a
/// million at most, 3 ms within the while that is looked at, which is less than the delays vary.
///
/// # Steps
///
/// A lag far from the estimate is either that of a frame with a wrong stamp, or that of a clock
/// that has been set. One lag does not tell. Several that agree with each other over a while,
/// without one in between that fits, do: the estimate begins anew with them. Frames that waited
/// together and arrive at once do not, since their lags differ as much as their stamps.
class OffsetEstimator {
public:
    static constexpr double window = 30.0;            ///< lags looked at, s
    static constexpr std::size_t mostLags = 1024;     ///< at most
    static constexpr double quantile = 0.05;          ///< stands for the least lag
    static constexpr double farAway = 0.5;            ///< from the estimate: not of this base, s
    static constexpr double agreement = 0.25;         ///< of the lags of a new base, s
    static constexpr std::size_t fewestAgreeing = 3;  ///< lags of a new base
    static constexpr double shortestAgreement = 0.4;  ///< from the first of them to the last, s

    /// What a lag says.
    enum class Verdict {
        Fits,     ///< the estimate, which takes it in
        Far,      ///< it may be wrong, or the first of a new base
        NewBase,  ///< it is the last that was needed for one
    };

    /// @param lag arrival less stamp, s
    /// @param arrived when, s; not before that of the last call
    Verdict add(double lag, double arrived);

    /// @return the lag of a frame without delay but the least, s; 0 before the first
    double leastLag() const;
    /// @return within how much 90 % of the lags are, s
    double jitter() const;
    /// @return whether a second or more was looked at
    bool isSettled() const;

private:
    struct Lag {
        double arrived;
        double value;
    };

    void take(const Lag& lag);
    bool agree(const Lag& lag);
    double at(double part) const;

    std::deque<Lag> lags_;         ///< of the window, in the order of arrival
    std::vector<double> sorted_;   ///< their values
    std::vector<Lag> candidates_;  ///< of a new base
};

}  // namespace Veskar::Live
