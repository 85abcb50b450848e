// SPDX-License-Identifier: Apache-2.0
// Colours as numbers, and words for them.
#include <veskar/Vocabulary.h>

#include "live/onvif/ColorWords.h"

#include <set>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::Pair;

ColorCluster rgb(double r, double g, double b) {
    return {ColorSpace::Rgb, {r, g, b}, std::nullopt, std::nullopt};
}

ColorCluster yCbCr(double y, double cb, double cr) {
    return {ColorSpace::YCbCr, {y, cb, cr}, std::nullopt, std::nullopt};
}

std::string wordFor(const ColorCluster& cluster) {
    return nearestColor(cieLabOf(cluster).value());
}

void expectNear(const ColorCluster& cluster, const CieLab& expected) {
    const CieLab place = cieLabOf(cluster).value();
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(place[i], expected[i], 0.02) << i;
    }
}

// Published values for sRGB and D65, as by B. Lindbloom's calculator.
TEST(ColorWords, StandOnCielab) {
    expectNear(rgb(255.0, 255.0, 255.0), {100.0, 0.0, 0.0});
    expectNear(rgb(0.0, 0.0, 0.0), {0.0, 0.0, 0.0});
    expectNear(rgb(255.0, 0.0, 0.0), {53.24, 80.09, 67.20});
    expectNear(rgb(0.0, 255.0, 0.0), {87.73, -86.18, 83.18});
    expectNear(rgb(0.0, 0.0, 255.0), {32.30, 79.19, -107.86});
    expectNear(rgb(128.0, 128.0, 128.0), {53.59, 0.0, 0.0});
    expectNear({ColorSpace::CieLab, {50.0, 10.0, -20.0}, {}, {}}, {50.0, 10.0, -20.0});
}

TEST(ColorWords, TakeTheTransformationOfJpeg) {
    // Red, green and blue by the equations of JFIF.
    expectNear(yCbCr(76.245, 84.972, 255.5), {53.24, 80.09, 67.20});
    expectNear(yCbCr(149.685, 43.528, 21.235), {87.73, -86.18, 83.18});
    expectNear(yCbCr(29.07, 255.5, 107.265), {32.30, 79.19, -107.86});
    expectNear(yCbCr(128.0, 128.0, 128.0), {53.59, 0.0, 0.0});
    // Values of video levels, which some devices send, name the same colours.
    EXPECT_EQ(wordFor(yCbCr(235.0, 128.0, 128.0)), "white");
    EXPECT_EQ(wordFor(yCbCr(16.0, 128.0, 128.0)), "black");
    EXPECT_EQ(wordFor(yCbCr(82.0, 90.0, 240.0)), "red");
}

TEST(ColorWords, FitWhatPeopleSay) {
    const std::pair<ColorCluster, const char*> colors[] = {
        {rgb(20.0, 22.0, 25.0), "black"},     {rgb(230.0, 230.0, 225.0), "white"},
        {rgb(130.0, 130.0, 128.0), "gray"},   {rgb(185.0, 188.0, 190.0), "gray"},
        {rgb(200.0, 20.0, 25.0), "red"},      {rgb(120.0, 10.0, 15.0), "red"},
        {rgb(30.0, 50.0, 120.0), "blue"},     {rgb(58.0, 105.0, 212.0), "blue"},
        {rgb(150.0, 190.0, 230.0), "blue"},   {rgb(20.0, 90.0, 40.0), "green"},
        {rgb(90.0, 100.0, 50.0), "green"},    {rgb(245.0, 215.0, 20.0), "yellow"},
        {rgb(250.0, 140.0, 20.0), "orange"},  {rgb(130.0, 75.0, 30.0), "brown"},
        {rgb(220.0, 195.0, 150.0), "beige"},  {rgb(250.0, 170.0, 190.0), "pink"},
        {rgb(100.0, 30.0, 140.0), "purple"},  {yCbCr(213.0, 135.0, 126.0), "white"},
        {yCbCr(102.0, 176.0, 119.0), "blue"}, {rgb(300.0, -20.0, 0.0), "red"}};
    for (const auto& [cluster, word] : colors) {
        EXPECT_EQ(wordFor(cluster), word)
            << cluster.value[0] << " " << cluster.value[1] << " " << cluster.value[2];
    }
}

TEST(ColorWords, EachHaveAColourThatLeadsBack) {
    for (const std::string& word : Vocabulary::knownColors) {
        const std::vector<ColorCluster> clusters = clustersFor({word, 0.6});
        if (word == "unknown") {
            EXPECT_TRUE(clusters.empty());
            continue;
        }
        ASSERT_EQ(clusters.size(), 1) << word;
        LeftOut leftOut;
        const Host::Label label = bestColor(clusters, leftOut);
        EXPECT_EQ(label.name, word);
        EXPECT_EQ(label.probability, 0.6);
    }
    EXPECT_TRUE(clustersFor({"chartreuse", 0.6}).empty());
}

Host::Label bestColorOf(const std::vector<ColorCluster>& clusters) {
    LeftOut leftOut;
    return bestColor(clusters, leftOut);
}

ColorCluster weighted(ColorCluster cluster, double weight) {
    cluster.weight = weight;
    return cluster;
}

ColorCluster likely(ColorCluster cluster, double likelihood) {
    cluster.likelihood = likelihood;
    return cluster;
}

TEST(ColorWords, WithTheGreatestShareWin) {
    // Two blues together are more than the white between them.
    const Host::Label label =
        bestColorOf({weighted(rgb(30.0, 50.0, 120.0), 0.3), weighted(rgb(255.0, 255.0, 255.0), 0.4),
                     weighted(rgb(58.0, 105.0, 212.0), 0.3)});
    EXPECT_EQ(label.name, "blue");
    EXPECT_NEAR(label.probability, 0.6, 1e-12);
    // A part that names no colour keeps its share.
    EXPECT_NEAR(bestColorOf({weighted(rgb(200.0, 20.0, 25.0), 0.5)}).probability, 0.5, 1e-12);
    // Weights beyond 1 are shares of their sum.
    EXPECT_NEAR(
        bestColorOf({weighted(rgb(0.0, 0.0, 0.0), 0.9), weighted(rgb(255.0, 0.0, 0.0), 0.6)})
            .probability,
        0.6, 1e-12);
    EXPECT_EQ(bestColorOf({rgb(255.0, 0.0, 0.0)}).probability, 1.0);
    EXPECT_EQ(bestColorOf({}).name, "unknown");
    EXPECT_EQ(bestColorOf({weighted(rgb(255.0, 0.0, 0.0), 0.0)}).name, "unknown");
}

TEST(ColorWords, WithLikelihoodsAreCandidates) {
    const Host::Label label =
        bestColorOf({likely(rgb(0.0, 0.0, 255.0), 0.93), likely(rgb(255.0, 255.0, 255.0), 0.87),
                     likely(rgb(30.0, 50.0, 120.0), 0.5), weighted(rgb(255.0, 0.0, 0.0), 1.0)});
    EXPECT_EQ(label.name, "blue");
    EXPECT_EQ(label.probability, 0.93);
}

TEST(ColorWords, OfUndefinedColourSpacesAreCounted) {
    LeftOut leftOut;
    const ColorCluster odd{ColorSpace::Other, {1.0, 2.0, 3.0}, {}, {}};
    EXPECT_EQ(cieLabOf(odd), std::nullopt);
    EXPECT_EQ(bestColor({odd, rgb(0.0, 0.0, 0.0)}, leftOut).name, "black");
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Color of another colour space", 1)));
}

}  // namespace
}  // namespace Veskar::Live
