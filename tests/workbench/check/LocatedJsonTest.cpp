// SPDX-License-Identifier: Apache-2.0
#include "check/LocatedJson.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

using Kind = LocatedValue::Kind;

TEST(LocatedJson, KnowsTheLineOfEveryMember) {
    LocatedValue root;
    ASSERT_EQ(parseLocated("{\n"
                           "  \"a\": 1,\n"
                           "  \"b\": {\n"
                           "    \"c\":\n"
                           "      2.50\n"
                           "  },\n"
                           "  \"d\": [true,\n"
                           "    \"x\"]\n"
                           "}\n",
                           Comments::Refused, root)
                  .line,
              0);
    EXPECT_EQ(root.line, 1);
    ASSERT_NE(root.find("a"), nullptr);
    EXPECT_EQ(root.find("a")->line, 2);
    EXPECT_EQ(root.find("a")->kind, Kind::Integer);
    const LocatedValue* c = root.find("b")->find("c");
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->line, 4) << "the line of the key";
    EXPECT_EQ(c->kind, Kind::Real);
    EXPECT_EQ(c->text, "2.50") << "as written";
    EXPECT_EQ(c->number, 2.5);
    EXPECT_EQ(root.find("d")->line, 7);
    ASSERT_EQ(root.find("d")->elements.size(), 2U);
    EXPECT_EQ(root.find("d")->elements[0].line, 7);
    EXPECT_EQ(root.find("d")->elements[1].line, 8);
    EXPECT_EQ(root.find("e"), nullptr);
}

TEST(LocatedJson, ANumberAtTheEndOfItsLineStandsOnThatLine) {
    LocatedValue root;
    ASSERT_EQ(parseLocated("[\n1\n,\n2\n]", Comments::Refused, root).line, 0);
    EXPECT_EQ(root.elements[0].line, 2);
    EXPECT_EQ(root.elements[1].line, 4);
}

TEST(LocatedJson, FindsTheLastOfRepeatedKeys) {
    LocatedValue root;
    ASSERT_EQ(parseLocated(R"({"a": 1, "a": 2})", Comments::Refused, root).line, 0);
    EXPECT_EQ(root.members.size(), 2U);
    EXPECT_EQ(root.find("a")->text, "2");
}

TEST(LocatedJson, TellsWhereTheSyntaxEnds) {
    LocatedValue root;
    const JsonFault fault = parseLocated("{\n\"a\": 1,\n\"b\" 2\n}", Comments::Refused, root);
    EXPECT_EQ(fault.line, 3);
    EXPECT_NE(fault.reason, "");
    EXPECT_EQ(parseLocated("", Comments::Refused, root).line, 1);
    EXPECT_EQ(parseLocated("{} x", Comments::Refused, root).line, 1);
}

TEST(LocatedJson, ShowsValues) {
    LocatedValue root;
    ASSERT_EQ(parseLocated(R"({"a": "x", "b": [1, 2], "c": {}, "d": null, "e": -3e2})",
                           Comments::Refused, root)
                  .line,
              0);
    EXPECT_EQ(root.find("a")->shown(), "\"x\"");
    EXPECT_EQ(root.find("b")->shown(), "an array of 2");
    EXPECT_EQ(root.find("c")->shown(), "an object");
    EXPECT_EQ(root.find("d")->shown(), "null");
    EXPECT_EQ(root.find("e")->shown(), "-3e2");
}

TEST(LocatedJson, RefusesDeepNesting) {
    LocatedValue document;
    std::string text;
    for (int i = 0; i < 150000; ++i) {
        text += i == 50 ? "\n{\"a\":" : "{\"a\":";
    }
    const auto fault = parseLocated(text, Comments::Refused, document);
    EXPECT_EQ(fault.line, 2);
    EXPECT_EQ(fault.reason, "nested more than 100 levels deep");
}

}  // namespace
}  // namespace Workbench
