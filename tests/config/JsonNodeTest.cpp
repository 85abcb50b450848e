// SPDX-License-Identifier: Apache-2.0
#include <veskar/JsonNode.h>

#include <gtest/gtest.h>

namespace {

using Veskar::JsonNode;

TEST(JsonNode, ReadsEachTypeOfValue) {
    const JsonNode document =
        JsonNode::fromString(R"({"real": 1.5, "integer": 7, "boolean": true, "array": [1, 2]})");
    EXPECT_EQ(document.get("real").asReal(), 1.5);
    EXPECT_EQ(document.get("integer").asInteger(), 7);
    EXPECT_TRUE(document.get("boolean").asBoolean());
    EXPECT_EQ(document.get("array").asArray().size(), 2U);
}

}  // namespace
