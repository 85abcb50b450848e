// SPDX-License-Identifier: Apache-2.0
#include "io/Digest.h"

#include <gtest/gtest.h>

using Workbench::Digest;

TEST(Digest, OfNothingIsThePublishedOne) {
    EXPECT_EQ(Digest().text(), "99aa06d3014798d86001c324468d497f");
}

TEST(Digest, DependsOnTheTextAndNotOnItsPieces) {
    const std::string text(1000, 'x');
    Digest whole;
    whole.add(text);
    Digest pieces;
    for (std::size_t begin = 0; begin < text.size(); begin += 7) {
        pieces.add(std::string_view(text).substr(begin, 7));
    }
    EXPECT_EQ(whole.text(), pieces.text());
    pieces.add("x");
    EXPECT_NE(whole.text(), pieces.text());
}
