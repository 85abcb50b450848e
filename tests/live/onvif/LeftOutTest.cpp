// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/LeftOut.h"

#include <cstddef>
#include <string>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

TEST(LeftOut, CountsTerms) {
    LeftOut leftOut;
    leftOut.add("a");
    leftOut.add("b");
    leftOut.add("a");
    EXPECT_EQ(leftOut.counts().at("a"), 2U);
    EXPECT_EQ(leftOut.counts().at("b"), 1U);
}

TEST(LeftOut, KeepsNoMoreTermsThanItMay) {
    LeftOut leftOut;
    for (int i = 0; i < 200; ++i) {
        leftOut.add("term " + std::to_string(i));
    }
    leftOut.add("term 127");
    EXPECT_EQ(leftOut.counts().size(), 129U);
    EXPECT_EQ(leftOut.counts().at("term 127"), 2U);
    EXPECT_EQ(leftOut.counts().at("other terms"), 72U);
}

TEST(LeftOut, CutsLongTermsBetweenCharacters) {
    LeftOut leftOut;
    leftOut.add(std::string(79, 'x') + "\u00e9 and more");
    leftOut.add(std::string(78, 'y') + "\u00e9 and more");
    EXPECT_EQ(leftOut.counts().count(std::string(79, 'x')), 1U);
    EXPECT_EQ(leftOut.counts().count(std::string(78, 'y') + "\u00e9"), 1U);
}

}  // namespace
}  // namespace Veskar::Live
