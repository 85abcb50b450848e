// SPDX-License-Identifier: Apache-2.0
#include "fusion/Differences.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace VeskarTest {
namespace {

constexpr double tolerance = 1e-9;

/// Keeps the first difference and its place.
class Comparison {
public:
    void setPlace(std::string track) { place_ = std::move(track); }

    void near(const char* what, double actual, double expected, double scale) {
        const bool areBothNaN = std::isnan(actual) && std::isnan(expected);
        if (!areBothNaN && !(std::abs(actual - expected) <= tolerance * scale)) {
            note(what, actual, expected);
        }
    }

    template <typename A, typename E>
    void equal(const char* what, const A& actual, const E& expected) {
        if (!(actual == expected)) {
            note(what, actual, expected);
        }
    }

    const std::string& first() const { return text_; }

private:
    template <typename A, typename E>
    void note(const char* what, const A& actual, const E& expected) {
        if (text_.empty()) {
            std::ostringstream difference;
            difference << place_ << ", " << what << ": " << std::setprecision(17) << actual
                       << " instead of " << expected;
            text_ = difference.str();
        }
    }

    std::string place_;
    std::string text_;
};

void compareTrack(Comparison& comparison, const Veskar::Track& actual,
                  const Literal::Track& expected) {
    for (std::size_t i = 0; i < 6; ++i) {
        const auto row = static_cast<Eigen::Index>(i);
        const double sigma = std::sqrt(expected.P[i][i]);
        comparison.near("state", actual.state[row], expected.x[i], std::abs(expected.x[i]) + sigma);
        for (std::size_t j = 0; j < 6; ++j) {
            comparison.near("covariance", actual.covariance(row, static_cast<Eigen::Index>(j)),
                            expected.P[i][j], sigma * std::sqrt(expected.P[j][j]));
        }
    }
    for (std::size_t i = 0; i < 4; ++i) {
        comparison.near("box", actual.boundingBox[static_cast<Eigen::Index>(i)], expected.box[i],
                        1.0 + std::abs(expected.box[i]));
    }
    comparison.near("start position u", actual.startPosition[0], expected.startPosition[0], 1.0);
    comparison.near("start position v", actual.startPosition[1], expected.startPosition[1], 1.0);
    comparison.equal("time", actual.time, expected.time);
    comparison.equal("start time", actual.startTime, expected.startTime);
    comparison.equal("coasting time", actual.coastingTime, expected.coastingTime);
    comparison.equal("confidence", actual.isConfident, expected.isConfident);
}

void compareLabels(Comparison& comparison, const Veskar::Track& actual,
                   const Literal::Track& expected) {
    const Literal::Label labels[] = {
        {actual.getClassName(), actual.getClassProbability()},
        {actual.getColorName(), actual.getColorProbability()},
        {actual.getUpperClothingColorName(), actual.getUpperClothingColorProbability()},
        {actual.getLowerClothingColorName(), actual.getLowerClothingColorProbability()}};
    for (std::size_t which = 0; which < 4; ++which) {
        const Literal::Label label = expected.getLabel(which);
        comparison.equal("label", labels[which].name, label.name);
        comparison.equal("label's probability", labels[which].probability, label.probability);
    }
}

void compareSupports(Comparison& comparison, const Veskar::SystemTrack& actual,
                     const Literal::SystemTrack& expected) {
    comparison.equal("number of sources", actual.sensorTracks.size(), expected.sensorTracks.size());
    for (const auto& [source, tracks] : expected.sensorTracks) {
        const auto actualTracks = actual.sensorTracks.find(static_cast<Veskar::Source>(source));
        if (actualTracks == actual.sensorTracks.end() ||
            actualTracks->second.size() != tracks.size()) {
            comparison.equal("sensor tracks are the same", false, true);
            return;
        }
        auto entry = actualTracks->second.begin();
        for (const auto& [id, track] : tracks) {
            comparison.equal("sensor track", entry->first, id);
            compareTrack(comparison, *entry->second, *track);
            ++entry;
        }
    }
}

void compareSystemTrack(Comparison& comparison, const Veskar::SystemTrack& actual,
                        const Literal::SystemTrack& expected) {
    comparison.equal("id", actual.id, expected.id);
    compareTrack(comparison, actual, expected);
    compareLabels(comparison, actual, expected);
    compareSupports(comparison, actual, expected);
    comparison.equal("confirmation", actual.isConfirmed, expected.isConfirmed);
    comparison.equal("system start time", actual.systemStartTime, expected.systemStartTime);
    comparison.equal("posteriors", actual.trackProbabilityHistory.size(),
                     expected.trackProbabilityHistory.size());
    for (std::size_t i = 0; i < 5; ++i) {
        comparison.near("posterior", actual.trackProbabilityHistory[i],
                        expected.trackProbabilityHistory[i], 1.0);
    }
}

}  // namespace

std::string firstDifference(const std::vector<std::shared_ptr<Veskar::SystemTrack>>& actual,
                            const Literal::SystemTracks& expected) {
    Comparison comparison;
    comparison.equal("number of system tracks", actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size() && comparison.first().empty(); ++i) {
        comparison.setPlace("system track " + std::to_string(i));
        compareSystemTrack(comparison, *actual[i], *expected[i]);
    }
    return comparison.first();
}

}  // namespace VeskarTest
