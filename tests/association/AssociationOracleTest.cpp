// SPDX-License-Identifier: Apache-2.0
// Whole association calls against the literal rules, pair by pair and in order.
#include <veskar/TrackAssociator.h>

#include "association/LiteralAssociator.h"
#include "association/Scene.h"

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Source;
using Veskar::TrackAssociator;

namespace {

/// Every combination of the four switches, by its bits.
class AssociationOracle : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        config = makeSceneConfig(random);
        config.module.splitGating = (GetParam() & 1) != 0;
        config.module.useJVA = (GetParam() & 2) != 0;
        config.module.allowRadarToMultiple = (GetParam() & 4) != 0;
        config.module.removeClassMismatches = (GetParam() & 8) != 0;
    }

    void compareSensorToSystem(const Scene& scene) {
        const LiteralAssociator oracle(config);
        TrackAssociator associator(config);
        std::unordered_set<int> expectedRemoved = {-1};
        std::unordered_set<int> removed = {-1};
        const Pairs expected = oracle.sensorToSystemAssociation(scene.sensors, scene.systems,
                                                                scene.source, expectedRemoved);
        EXPECT_EQ(associator.sensorToSystemAssociation(scene.sensors, scene.systems, scene.source,
                                                       removed),
                  expected);
        EXPECT_EQ(removed, expectedRemoved);
        found += expected.size();
    }

    void compareSystemToSystem(const Scene& scene) {
        const LiteralAssociator oracle(config);
        TrackAssociator associator(config);
        const Pairs expected = oracle.systemToSystemAssociation(scene.systems, scene.excludedIds);
        EXPECT_EQ(associator.systemToSystemAssociation(scene.systems, scene.excludedIds), expected);
        found += expected.size();
    }

    RandomEstimates random{static_cast<unsigned>(100 + GetParam())};
    Veskar::Config config;
    std::size_t found = 0;  ///< pairs seen: a comparison of nothing with nothing proves nothing
};

TEST_P(AssociationOracle, AgreesOnRandomScenes) {
    for (int k = 0; k < 240; ++k) {
        SceneSettings settings;
        settings.systems = random.integer(1, 14);
        settings.sensors = random.integer(0, 14);
        settings.source = k % 5 < 2   ? Source::Radar
                          : k % 5 < 4 ? Source::VideoObject
                                      : Source::VideoVura;
        settings.spread = random.uniform(0.3, 4.0);
        settings.otherSource = random.uniform(0.0, 0.8);
        settings.onGrid = k % 3 == 0;
        const Scene scene = makeScene(settings, random);
        SCOPED_TRACE("scene " + std::to_string(k));
        compareSensorToSystem(scene);
        compareSystemToSystem(scene);
    }
    EXPECT_GT(found, 200u);
}

INSTANTIATE_TEST_SUITE_P(AllSwitches, AssociationOracle, testing::Range(0, 16));

}  // namespace
