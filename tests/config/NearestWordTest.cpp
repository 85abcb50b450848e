// SPDX-License-Identifier: Apache-2.0
#include <veskar/NearestWord.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

using Veskar::nearestWord;

TEST(NearestWord, TakesTheFewestEdits) {
    const std::vector<std::string> words{"useJVA", "splitGating", "gatingDistance"};
    EXPECT_EQ(nearestWord("useJvA", words), "useJVA");
    EXPECT_EQ(nearestWord("splitgating", words), "splitGating");
    EXPECT_EQ(nearestWord("gatingDistanc", words), "gatingDistance");
    EXPECT_EQ(nearestWord("gatingDistances", words), "gatingDistance");
    EXPECT_EQ(nearestWord("useJVA", words), "useJVA");
}

TEST(NearestWord, IsNoneBeyondThreeEdits) {
    EXPECT_EQ(nearestWord("abcdef", {"abc"}), "abc");
    EXPECT_EQ(nearestWord("abcdefg", {"abc"}), "");
    EXPECT_EQ(nearestWord("abc", {"abcdefg"}), "");
    EXPECT_EQ(nearestWord("wxyz", {"abcd"}), "");
    EXPECT_EQ(nearestWord("word", {}), "");
    EXPECT_EQ(nearestWord(std::string(1000000, 'a'), {"aaaa"}), "");
}

TEST(NearestWord, CountsAReplacedLetterAsOneEdit) {
    EXPECT_EQ(nearestWord("abcxyz", {"abcdef"}), "abcdef");
    EXPECT_EQ(nearestWord("abxyzw", {"abcdef"}), "");
    EXPECT_EQ(nearestWord("cut", {"coats", "cat"}), "cat");
}

TEST(NearestWord, IsTheFirstOfEquallyNear) {
    EXPECT_EQ(nearestWord("cat", {"cart", "hat", "bat"}), "cart");
}
