// SPDX-License-Identifier: Apache-2.0
// Compares whole association calls with the literal rules: pairs, their order, removed ids and
// errors.
#include <veskar/TrackAssociator.h>

#include "association/LiteralAssociator.h"
#include "association/Scene.h"

#include <array>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Source;
using Veskar::TrackAssociator;

namespace {

/// The result of a call, or its exception.
struct Outcome {
    Pairs pairs;
    std::string error;

    bool operator==(const Outcome& other) const {
        return pairs == other.pairs && error == other.error;
    }
};

std::ostream& operator<<(std::ostream& os, const Outcome& outcome) {
    return os << testing::PrintToString(outcome.pairs) << ' ' << outcome.error;
}

template <typename Call>
Outcome outcomeOf(Call call) {
    try {
        return {call(), ""};
    } catch (const std::out_of_range& e) {
        return {{}, std::string("out of range: ") + e.what()};
    } catch (const std::runtime_error& e) {
        return {{}, std::string("runtime error: ") + e.what()};
    }
}

/// Every combination of the four switches, by its bits.
class AssociationOracle : public testing::TestWithParam<int> {
protected:
    void SetUp() override { drawConfig(); }

    void drawConfig() {
        config = makeSceneConfig(random);
        config.module.splitGating = (GetParam() & 1) != 0;
        config.module.useJVA = (GetParam() & 2) != 0;
        config.module.allowRadarToMultiple = (GetParam() & 4) != 0;
        config.module.removeClassMismatches = (GetParam() & 8) != 0;
    }

    void compare(const Scene& scene) {
        compareSensorToSystem(scene);
        compareSystemToSystem(scene);
        compareMatrices(scene);
    }

    void compareSensorToSystem(const Scene& scene) {
        const LiteralAssociator oracle(config);
        TrackAssociator associator(config);
        std::unordered_set<int> expectedRemoved = {-1};
        std::unordered_set<int> removed = {-1};
        const Outcome expected = outcomeOf([&] {
            return oracle.sensorToSystemAssociation(scene.sensors, scene.systems, scene.source,
                                                    expectedRemoved);
        });
        EXPECT_EQ(outcomeOf([&] {
                      return associator.sensorToSystemAssociation(scene.sensors, scene.systems,
                                                                  scene.source, removed);
                  }),
                  expected);
        EXPECT_EQ(removed, expectedRemoved);
        EXPECT_EQ(associator.getAssociations(), expected.pairs);
        found += expected.pairs.size();
        errors += expected.error.empty() ? 0 : 1;
        removals += removed.size() - 1;
    }

    void compareSystemToSystem(const Scene& scene) {
        const LiteralAssociator oracle(config);
        TrackAssociator associator(config);
        const Outcome expected = outcomeOf(
            [&] { return oracle.systemToSystemAssociation(scene.systems, scene.excludedIds); });
        EXPECT_EQ(outcomeOf([&] {
                      return associator.systemToSystemAssociation(scene.systems, scene.excludedIds);
                  }),
                  expected);
        found += expected.pairs.size();
    }

    void compareMatrices(const Scene& scene) {
        const LiteralAssociator oracle(config);
        TrackAssociator associator(config);
        Matrices expected;
        const Outcome expectedOutcome = outcomeOf([&] { return expected.fill(oracle, scene); });
        Matrices matrices;
        EXPECT_EQ(outcomeOf([&] { return matrices.fill(associator, scene); }), expectedOutcome);
        if (!expectedOutcome.error.empty()) {
            return;
        }
        EXPECT_EQ(testing::PrintToString(matrices.cost), testing::PrintToString(expected.cost));
        EXPECT_EQ(matrices.allowed, expected.allowed);
        EXPECT_EQ(matrices.classMatch, expected.classMatch);
        EXPECT_EQ(matrices.mismatches, expected.mismatches);
        EXPECT_EQ(testing::PrintToString(matrices.systemCost),
                  testing::PrintToString(expected.systemCost));
        EXPECT_EQ(matrices.systemAllowed, expected.systemAllowed);
    }

    RandomEstimates random{static_cast<unsigned>(100 + GetParam())};
    Veskar::Config config;
    std::size_t found = 0;  ///< number of compared pairs: must be positive for a meaningful test
    std::size_t errors = 0;
    std::size_t removals = 0;

private:
    /// The results of the matrix operations, called in order.
    struct Matrices {
        Costs cost;
        Allowed allowed;
        ClassMatch classMatch;
        std::unordered_set<int> mismatches;
        Costs systemCost;
        Allowed systemAllowed;

        template <typename Associator>
        Pairs fill(Associator& associator, const Scene& scene) {
            associator.sensorToSystemCostMatrix(scene.sensors, scene.systems, cost, allowed,
                                                classMatch, scene.source);
            associator.handleClassMatching(scene.sensors, scene.systems, cost, allowed, classMatch,
                                           mismatches);
            associator.systemToSystemCostMatrix(scene.systems, systemCost, systemAllowed,
                                                scene.excludedIds);
            return {};
        }
    };
};

constexpr std::array<Source, 5> sourceCycle = {Source::Radar, Source::VideoObject, Source::Radar,
                                               Source::VideoObject, Source::VideoVura};

TEST_P(AssociationOracle, AgreesOnRandomScenes) {
    for (int k = 0; k < 300; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 14);
        settings.sensors = random.integer(0, 14);
        settings.source = sourceCycle[k % sourceCycle.size()];
        settings.spread = random.uniform(0.3, 4.0);
        settings.otherSource = random.uniform(0.0, 0.8);
        settings.reported = random.uniform(0.0, 0.6);
        SCOPED_TRACE("scene " + std::to_string(k));
        drawConfig();
        compare(makeScene(settings, random));
    }
    EXPECT_GT(found, 300u);
    EXPECT_EQ(errors, 0u);
    if (config.module.removeClassMismatches && config.module.useJVA) {
        EXPECT_GT(removals, 20u);
    }
}

// States and covariances on a grid, which yield costs and matrices with many exact ties.
TEST_P(AssociationOracle, AgreesOnTies) {
    for (int k = 0; k < 100; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 12);
        settings.sensors = random.integer(1, 12);
        settings.source = sourceCycle[k % sourceCycle.size()];
        settings.onGrid = true;
        SCOPED_TRACE("scene " + std::to_string(k));
        drawConfig();
        compare(makeScene(settings, random));
    }
    EXPECT_GT(found, 100u);
}

// Some system tracks have no map for the source: which error comes first depends on the order of
// the queries.
TEST_P(AssociationOracle, AgreesOnErrors) {
    for (int k = 0; k < 60; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 5);
        settings.sensors = random.integer(0, 3);
        settings.source = k % 2 == 0 ? Source::VideoVura : Source::System;
        settings.reported = 0.9;
        settings.allSourcesKnown = false;
        SCOPED_TRACE("scene " + std::to_string(k));
        compare(makeScene(settings, random));
    }
    EXPECT_GT(errors, 10u);
}

TEST_P(AssociationOracle, AgreesWhereTracksReportAnotherSource) {
    for (int k = 0; k < 60; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 8);
        settings.sensors = random.integer(1, 8);
        settings.reported = 0.6;
        Scene scene = makeScene(settings, random);
        for (const auto& sensor : scene.sensors) {
            sensor->source = random.integer(0, 1) == 0 ? Source::VideoObject : Source::Radar;
        }
        SCOPED_TRACE("scene " + std::to_string(k));
        compare(scene);
    }
    EXPECT_GT(found, 20u);
}

// Calls terminate and agree for any numbers, including states that are NaN only in components that
// the position gate ignores, so that NaN costs reach the solver as allowed pairs.
TEST_P(AssociationOracle, AgreesOnNumbersThatAreNotNormal) {
    const std::array<double, 10> numbers = {std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::infinity(),
                                            -std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::denorm_min(),
                                            -1e-310,
                                            1e300,
                                            -1e300,
                                            1e155,
                                            0.0,
                                            -0.0};
    for (int k = 0; k < 100; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 10);
        settings.sensors = random.integer(1, 10);
        settings.source = sourceCycle[k % sourceCycle.size()];
        Scene scene = makeScene(settings, random);
        const auto disturb = [&](Veskar::Track& track) {
            const double number = numbers[random.integer(0, numbers.size() - 1)];
            switch (random.integer(0, 7)) {
                case 0:
                    track.state[random.integer(0, 5)] = number;
                    break;
                case 1:
                    track.state[1] = number;
                    break;
                case 2:
                    track.covariance.data()[random.integer(0, 35)] = number;
                    break;
                case 3:
                    track.covariance *= random.integer(0, 1) == 0 ? -1.0 : number;
                    break;
                case 4:
                    track.startTime = number;
                    break;
                default:
                    break;
            }
        };
        for (const auto& system : scene.systems) {
            disturb(*system);
        }
        for (const auto& sensor : scene.sensors) {
            disturb(*sensor);
        }
        drawConfig();
        if (k % 4 == 0) {
            config.module.velocityGatingSimilarity = k % 8 == 0 ? 1.0 : -1.0;
        }
        SCOPED_TRACE("scene " + std::to_string(k));
        compare(scene);
    }
    EXPECT_GT(found, 50u);
}

TEST_P(AssociationOracle, AgreesOnLargeScenes) {
    for (int k = 0; k < 6; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(30, 60);
        settings.sensors = random.integer(30, 60);
        settings.source = sourceCycle[k % sourceCycle.size()];
        settings.spread = random.uniform(3.0, 12.0);
        SCOPED_TRACE("scene " + std::to_string(k));
        compareSensorToSystem(makeScene(settings, random));
        compareSystemToSystem(makeScene(settings, random));
    }
    EXPECT_GT(found, 20u);
}

INSTANTIATE_TEST_SUITE_P(AllSwitches, AssociationOracle, testing::Range(0, 16));

}  // namespace
