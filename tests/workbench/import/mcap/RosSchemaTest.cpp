// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "import/mcap/Cdr.h"
#include "import/mcap/RosSchema.h"

#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using nlohmann::json;
using testing::HasSubstr;
using VeskarTest::Cdr;
using Workbench::RosSchema;

constexpr const char* nested = R"(# A comment
uint8 FIRST=1
uint8 SECOND = 2   # constants are no fields
string WORD="a = b"
bool   flag   # behind a field
Point point
float32[3] fixed
uint16[] numbers
string<=8[<=2] words
other_msgs/Inner[] inner
int64 last -7
================================================================================
MSG: my_msgs/Point
float64 x
float64 y
===
MSG: other_msgs/Inner
int8 tiny
other_msgs/msg/Leaf leaf
===
MSG: other_msgs/msg/Leaf
int16 value
)";

std::string faultOf(const std::string& text, std::string_view data = {}) {
    try {
        const RosSchema schema("my_msgs/msg/All", text);
        if (!data.empty()) {
            schema.read(data);
        }
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
    return "no fault";
}

class RosSchemaTest : public testing::TestWithParam<bool> {};

TEST_P(RosSchemaTest, ReadsEveryKindOfField) {
    Cdr cdr(GetParam());
    cdr.add<std::uint8_t>(1).add(1.5).add(-2.25);
    cdr.add(0.5F).add(1.5F).add(-2.5F);
    cdr.count(3).add<std::uint16_t>(1).add<std::uint16_t>(65535).add<std::uint16_t>(3);
    cdr.count(2).text("one").text("");
    cdr.count(2).add<std::int8_t>(-1).add<std::int16_t>(-300);
    cdr.add<std::int8_t>(2).add<std::int16_t>(300);
    cdr.add<std::int64_t>(-5'000'000'000);
    const json expected = {
        {"flag", 1},
        {"point", {{"x", 1.5}, {"y", -2.25}}},
        {"fixed", {0.5, 1.5, -2.5}},
        {"numbers", {1, 65535, 3}},
        {"words", {"one", ""}},
        {"inner",
         {{{"tiny", -1}, {"leaf", {{"value", -300}}}}, {{"tiny", 2}, {"leaf", {{"value", 300}}}}}},
        {"last", -5'000'000'000}};
    EXPECT_EQ(RosSchema("my_msgs/msg/All", nested).read(cdr.bytes()), expected);
    for (std::size_t size = 0; size < cdr.bytes().size(); ++size) {
        EXPECT_THROW(RosSchema("my_msgs/msg/All", nested).read(cdr.bytes().substr(0, size)),
                     Veskar::Host::InputError)
            << size;
    }
}

INSTANTIATE_TEST_SUITE_P(BothByteOrders, RosSchemaTest, testing::Bool(),
                         [](const auto& instance) { return instance.param ? "Little" : "Big"; });

TEST(RosSchemaFaults, ADefinitionMustBeWhole) {
    EXPECT_EQ(faultOf("Point point\n"), "the type my_msgs/Point has no definition");
    EXPECT_EQ(faultOf("All again\n"), "the type my_msgs/All contains itself");
    EXPECT_EQ(faultOf("uint8\n"), "my_msgs/All: \"uint8\" is no field");
    EXPECT_EQ(faultOf("uint8 x\n===\nuint8 y\n"), "a definition has no name");
    EXPECT_EQ(faultOf(""), "no fault");
    EXPECT_EQ(faultOf("", std::string(4, '\0')), "the message is too short");
    EXPECT_EQ(faultOf("", std::string(5, '\0')), "no fault") << "ROS gives it a byte";
}

TEST(RosSchemaFaults, AHostileDefinitionTakesNoTime) {
    // Two of the next in each: 2^30 of the last in all.
    std::string text;
    for (int i = 0; i < 30; ++i) {
        const std::string next = "T" + std::to_string(i);
        text.append(next).append(" a\n").append(next).append(" b\n");
        text.append("===\nMSG: my_msgs/").append(next).append("\n");
    }
    EXPECT_EQ(faultOf(text + "uint8 x\n", std::string(100, '\0')), "the message is too short");
    EXPECT_EQ(faultOf(text), "no fault");
    EXPECT_EQ(faultOf(text, std::string(100, '\0')), "the message is too short");
    // Empty ones take no bytes of their own in memory, but must in the message.
    EXPECT_EQ(faultOf("A[9000] a\n===\nMSG: my_msgs/A\nB[9000] b\n===\nMSG: my_msgs/B\n",
                      std::string(10'000, '\0')),
              "b: the message ends within it");
    std::string deep;
    for (int i = 0; i < 300'000; ++i) {
        const std::string next = "T" + std::to_string(i);
        deep.append(next).append(" a\n===\nMSG: my_msgs/").append(next).append("\n");
    }
    EXPECT_THAT(faultOf(deep), HasSubstr("is nested too deeply"));
}

TEST(RosSchemaFaults, AHostileLengthReservesNothing) {
    EXPECT_EQ(faultOf("uint8[] x\n", Cdr().count(4'000'000'000U).bytes()),
              "x: the message ends within it");
    EXPECT_EQ(faultOf("uint8 x\n", std::string("\0\2\0\0\1", 5)),
              "the message is not in plain CDR");
    EXPECT_EQ(faultOf("string x\n", Cdr().count(100).bytes()), "the message is too short");
}

}  // namespace
