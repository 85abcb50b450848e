// SPDX-License-Identifier: Apache-2.0
#include "host/adapter/ParameterTable.h"

#include "host/json/LineText.h"

namespace Veskar::Host::Internal {
namespace {

/// Frames that are added more often than this (s) would only cost time, after a gap very much.
constexpr double leastSpacing = 0.01;

template <double HostParameters::*member>
double* valueOf(HostParameters& record) {
    return &(record.*member);
}

template <double HostParameters::*member>
Parameter positive(const char* name, const char* meaning, double most) {
    return {name, meaning, valueOf<member>, 1, 0.0, false, most};
}

template <double HostParameters::*member>
Parameter atLeast(double least, const char* name, const char* meaning, double most) {
    return {name, meaning, valueOf<member>, 1, least, true, most};
}

template <double HostParameters::*member>
Parameter notNegative(const char* name, const char* meaning, double most) {
    return atLeast<member>(0.0, name, meaning, most);
}

}  // namespace

std::string Parameter::limits() const {
    return (isLeastAllowed ? "at least " : "above ") + shortestText(least) + " and at most " +
           shortestText(most);
}

const std::vector<Parameter>& parameterTable() {
    // A gain of 0 would make the probability of a system track NaN forever, and a covariance
    // without floor is singular.
    using P = HostParameters;
    static const std::vector<Parameter> table{
        positive<&P::radarGain>("radarGain", "likelihood ratio of a radar report", 1e6),
        positive<&P::videoGain>("videoGain", "likelihood ratio of a video report", 1e6),
        positive<&P::tentativeGain>("tentativeGain", "that of a tentative track", 1e6),
        positive<&P::coastingGain>("coastingGain", "that of a coasting track", 1e6),
        positive<&P::predictedGain>("predictedGain", "that of a predicted report", 1e6),
        {"radarFloorStd", "standard deviations of u, u rate, v, v rate, range, range rate",
         [](HostParameters& record) { return record.radarFloorStd.data(); }, 6, 0.0, false, 1e3},
        notNegative<&P::pseudoRangeStdPerRange>("pseudoRangeStdPerRange", "fraction of the range",
                                                10.0),
        notNegative<&P::rangeStdPerRate>("rangeStdPerRate", "s", 1e3),
        notNegative<&P::groundSlopeStd>("groundSlopeStd", "degrees", 45.0),
        notNegative<&P::cutBoxStd>("cutBoxStd", "image units", 1e3),
        positive<&P::unknownImageVelocityStd>("unknownImageVelocityStd", "1/s", 1e3),
        positive<&P::unknownTangentialSpeedStd>("unknownTangentialSpeedStd", "m/s", 1e3),
        notNegative<&P::predictedAccelerationStd>("predictedAccelerationStd", "m/s^2", 1e3),
        notNegative<&P::humanSpeedLimit>("humanSpeedLimit", "m/s", 1e3),
        notNegative<&P::classFromSpeedProbability>("classFromSpeedProbability", "probability", 1.0),
        atLeast<&P::videoSilence>(leastSpacing, "videoSilence", "s", 3600.0),
        positive<&P::slowInterval>("slowInterval", "s", 3600.0),
        atLeast<&P::predictionInterval>(leastSpacing, "predictionInterval", "s", 3600.0),
        notNegative<&P::nominalInterval>("nominalInterval", "s", 3600.0),
        notNegative<&P::belief>("belief", "intervals of the sensor", 1e3),
        notNegative<&P::longestBelief>("longestBelief", "s", 3600.0),
        notNegative<&P::longestGap>("longestGap", "s", 3600.0),
    };
    return table;
}

}  // namespace Veskar::Host::Internal
