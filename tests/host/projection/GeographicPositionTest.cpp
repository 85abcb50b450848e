// SPDX-License-Identifier: Apache-2.0
// Geographic positions of ground points and back.
#include <veskar-host/GeographicPosition.h>

#include <random>

#include <gtest/gtest.h>

using Veskar::Host::geographicPosition;
using Veskar::Host::groundPoint;
using Veskar::Host::Site;

TEST(GeographicPosition, LeadsBackToTheGroundPoint) {
    std::mt19937 random(5);
    const auto anyOf = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (int i = 0; i < 200; ++i) {
        const Site site{anyOf(-80.0, 80.0), anyOf(-180.0, 180.0), anyOf(-360.0, 360.0)};
        const Eigen::Vector2d ground(anyOf(-300.0, 300.0), anyOf(-300.0, 300.0));
        EXPECT_LT((groundPoint(site, geographicPosition(site, ground)) - ground).norm(), 1e-5);
    }
}

TEST(GeographicPosition, IsFoundAcrossTheDateLine) {
    const Site site{10.0, 179.9999, 0.0};
    const Eigen::Vector2d east(0.0, -50.0);
    auto position = geographicPosition(site, east);
    ASSERT_GT(position.longitude, 180.0);
    position.longitude -= 360.0;
    EXPECT_LT((groundPoint(site, position) - east).norm(), 1e-4);
}
