// SPDX-License-Identifier: Apache-2.0
#include <veskar/JsonNode.h>

#include "config/JanssonBlocks.h"
#include "support/TemporaryDirectory.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::StartsWith;
using Veskar::JsonNode;
using VeskarTest::JanssonBlocks;
using VeskarTest::TemporaryDirectory;

static_assert(std::is_nothrow_move_constructible_v<JsonNode>);
static_assert(std::is_nothrow_move_assignable_v<JsonNode>);

/// @return the text of the runtime error that @p access throws
template <typename Access>
std::string refusal(const Access& access) {
    try {
        access();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(typeid(error), typeid(std::runtime_error));
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// @return the value of a one-member document
JsonNode member(const JsonNode& document) {
    return document.get("v");
}

// Reading

TEST(JsonNode, ReadsReals) {
    const JsonNode document = JsonNode::fromString(R"({"a": 1.0, "b": -0.25, "c": 1e-3})");
    EXPECT_EQ(document.get("a").asReal(), 1.0);
    EXPECT_EQ(document.get("b").asReal(), -0.25);
    EXPECT_EQ(document.get("c").asReal(), 0.001);
}

TEST(JsonNode, ReadsIntegers) {
    const JsonNode document = JsonNode::fromString(R"({"a": 0, "b": -7, "c": 2147483647})");
    EXPECT_EQ(document.get("a").asInteger(), 0);
    EXPECT_EQ(document.get("b").asInteger(), -7);
    EXPECT_EQ(document.get("c").asInteger(), std::numeric_limits<int>::max());
}

TEST(JsonNode, CutsIntegersTo32Bits) {
    const JsonNode document = JsonNode::fromString(
        R"({"a": 2147483648, "b": 4294967297, "c": -4294967297, "d": 9223372036854775807})");
    EXPECT_EQ(document.get("a").asInteger(), std::numeric_limits<int>::min());
    EXPECT_EQ(document.get("b").asInteger(), 1);
    EXPECT_EQ(document.get("c").asInteger(), -1);
    EXPECT_EQ(document.get("d").asInteger(), -1);
}

TEST(JsonNode, ReadsBooleans) {
    const JsonNode document = JsonNode::fromString(R"({"yes": true, "no": false})");
    EXPECT_TRUE(document.get("yes").asBoolean());
    EXPECT_FALSE(document.get("no").asBoolean());
}

TEST(JsonNode, ReadsArraysInOrder) {
    const JsonNode document = JsonNode::fromString("[3, 1, 4, 1, 5]");
    std::vector<int> values;
    for (const JsonNode& element : document.asArray()) {
        values.push_back(element.asInteger());
    }
    EXPECT_THAT(values, testing::ElementsAre(3, 1, 4, 1, 5));
}

TEST(JsonNode, ReservesExactlyTheElementsOfAnArray) {
    const std::vector<JsonNode> elements = JsonNode::fromString("[1, 2, 3, 4, 5]").asArray();
    EXPECT_EQ(elements.capacity(), 5U);
}

TEST(JsonNode, ReadsAnEmptyArrayAsAnEmptyList) {
    EXPECT_TRUE(JsonNode::fromString("[]").asArray().empty());
}

TEST(JsonNode, ReadsTheLastOfDuplicateKeys) {
    EXPECT_EQ(member(JsonNode::fromString(R"({"v": 1, "v": 2})")).asInteger(), 2);
}

TEST(JsonNode, LooksUpKeysByTheirUtf8Bytes) {
    EXPECT_EQ(JsonNode::fromString("{\"\xc3\xa9\": 1}").get("\xc3\xa9").asInteger(), 1);
    EXPECT_EQ(JsonNode::fromString(R"({"": 2})").get("").asInteger(), 2);
}

// Errors: every type of value against every accessor of another type

struct TypedValue {
    std::string name;
    std::string json;
};

std::ostream& operator<<(std::ostream& out, const TypedValue& value) {
    return out << value.json;
}

class JsonNodeType : public testing::TestWithParam<TypedValue> {
protected:
    JsonNode document = JsonNode::fromString("{\"v\": " + GetParam().json + "}");
    JsonNode value = document.get("v");

    bool is(const std::string& type) const { return GetParam().name == type; }

    template <typename Access>
    static void expectRefusalUnless(bool right, const std::string& text, const Access& access) {
        if (right) {
            EXPECT_NO_THROW(access());
        } else {
            EXPECT_EQ(refusal(access), text);
        }
    }
};

TEST_P(JsonNodeType, IsRefusedAsRealUnlessReal) {
    expectRefusalUnless(is("Real"), "JsonNode is not a real number.", [&] { value.asReal(); });
}

TEST_P(JsonNodeType, IsRefusedAsIntegerUnlessInteger) {
    expectRefusalUnless(is("Integer"), "JsonNode is not an integer.", [&] { value.asInteger(); });
}

TEST_P(JsonNodeType, IsRefusedAsBooleanUnlessBoolean) {
    expectRefusalUnless(is("True") || is("False"), "JsonNode is not a boolean.",
                        [&] { value.asBoolean(); });
}

TEST_P(JsonNodeType, IsRefusedAsArrayUnlessArray) {
    expectRefusalUnless(is("Array"), "JsonNode is not an array", [&] { value.asArray(); });
}

TEST_P(JsonNodeType, HasNoMembersUnlessObject) {
    expectRefusalUnless(is("Object"), "No such key: radar", [&] { value.get("radar"); });
}

INSTANTIATE_TEST_SUITE_P(EveryType, JsonNodeType,
                         testing::Values(TypedValue{"Real", "1.0"}, TypedValue{"Integer", "1"},
                                         TypedValue{"True", "true"}, TypedValue{"False", "false"},
                                         TypedValue{"String", R"("1.0")"},
                                         TypedValue{"Null", "null"}, TypedValue{"Array", "[1.0]"},
                                         TypedValue{"Object", R"({"radar": 1.0})"}),
                         [](const auto& type) { return type.param.name; });

TEST(JsonNode, NamesTheMissingKey) {
    const JsonNode document = JsonNode::fromString(R"({"gatingdistance": 1.0})");
    EXPECT_EQ(refusal([&] { document.get("gatingDistance"); }), "No such key: gatingDistance");
    EXPECT_EQ(refusal([&] { document.get(""); }), "No such key: ");
}

TEST(JsonNode, RefusesEverythingWithoutAValue) {
    const JsonNode empty;
    EXPECT_EQ(refusal([&] { empty.get("key"); }), "No such key: key");
    EXPECT_EQ(refusal([&] { empty.asReal(); }), "JsonNode is not a real number.");
    EXPECT_EQ(refusal([&] { empty.asInteger(); }), "JsonNode is not an integer.");
    EXPECT_EQ(refusal([&] { empty.asBoolean(); }), "JsonNode is not a boolean.");
    EXPECT_EQ(refusal([&] { empty.asArray(); }), "JsonNode is not an array");
}

// Loading

TEST(JsonNode, RepeatsTheWholeTextThatItCannotLoad) {
    EXPECT_EQ(refusal([] { JsonNode::fromString("{\"a\": 1"); }),
              "Failed to load json from string: {\"a\": 1, error='}' expected near end of file");
    EXPECT_EQ(refusal([] { JsonNode::fromString(""); }),
              "Failed to load json from string: , error='[' or '{' expected near end of file");
}

TEST(JsonNode, RepeatsATextUpToItsFirstNulByte) {
    const std::string text("{\"a\0b\": 1}", 10);
    try {
        JsonNode::fromString(text);
        FAIL();
    } catch (const std::runtime_error& error) {
        // what() is truncated at the NUL, like every C string.
        EXPECT_STREQ(error.what(), "Failed to load json from string: {\"a");
    }
}

TEST(JsonNode, ReadsTheLengthOfATextNotItsTerminator) {
    const std::string text("{\"v\": 1}\0trailing", 17);
    EXPECT_THROW(JsonNode::fromString(text), std::runtime_error);
    EXPECT_EQ(member(JsonNode::fromString(text.substr(0, 8))).asInteger(), 1);
}

TEST(JsonNode, RefusesADocumentThatIsNoObjectOrArray) {
    EXPECT_EQ(refusal([] { JsonNode::fromString("1.0"); }),
              "Failed to load json from string: 1.0, error='[' or '{' expected near '1.0'");
}

TEST(JsonNode, LoadsAFile) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("document.json");
    std::ofstream(path) << R"({"v": 2.5})";
    EXPECT_EQ(member(JsonNode::fromFile(path)).asReal(), 2.5);
}

TEST(JsonNode, NamesAMissingFile) {
    const std::string path = "/no/such/file.json";
    EXPECT_EQ(refusal([&] { JsonNode::fromFile(path); }), "Failed to load json from file: " + path +
                                                              ", error=unable to open " + path +
                                                              ": No such file or directory");
}

TEST(JsonNode, RefusesADirectory) {
    const std::string path = testing::TempDir();
    EXPECT_EQ(
        refusal([&] { JsonNode::fromFile(path); }),
        "Failed to load json from file: " + path + ", error='[' or '{' expected near end of file");
}

TEST(JsonNode, RefusesAnEmptyPath) {
    EXPECT_THAT(refusal([] { JsonNode::fromFile(""); }),
                StartsWith("Failed to load json from file: , error=unable to open "));
}

// 100 MB that are not a valid document

constexpr std::size_t hundredMegabytes = 100'000'000;

TEST(JsonNode, RefusesHundredMegabytesOfGarbageText) {
    std::string garbage(hundredMegabytes, '\0');
    std::uint32_t random = 1;
    for (char& byte : garbage) {
        random = random * 1664525U + 1013904223U;
        byte = static_cast<char>(random >> 24U);
    }
    garbage.front() = 'x';
    EXPECT_THAT(refusal([&] { JsonNode::fromString(garbage); }),
                StartsWith("Failed to load json from string: x"));
}

TEST(JsonNode, RefusesAFileOfHundredMegabytesWithoutAnEnd) {
    const JanssonBlocks blocks;
    const TemporaryDirectory directory;
    const std::string path = directory.file("garbage.json");
    std::ofstream(path) << "[\"" << std::string(hundredMegabytes, 'a');
    const std::string text = refusal([&] { JsonNode::fromFile(path); });
    std::filesystem::remove(path);
    EXPECT_EQ(text, "Failed to load json from file: " + path + ", error=premature end of input");
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

// Value semantics: every document is released once, whatever happens to its nodes

class JsonNodeOwnership : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(JanssonBlocks::count(), 0); }

    static JsonNode load() { return JsonNode::fromString(R"({"v": [1, 2], "w": {"x": 3.5}})"); }
    static bool isIntact(const JsonNode& document) {
        return document.get("w").get("x").asReal() == 3.5;
    }
    static JsonNode copyOf(const JsonNode& node) { return node; }
    /// Hides from the compiler that both are the same object, which it would warn about.
    static JsonNode& same(JsonNode& node) { return node; }

    const JanssonBlocks blocks;
};

TEST_F(JsonNodeOwnership, ReleasesADocument) {
    {
        const JsonNode document = load();
        EXPECT_GT(JanssonBlocks::count(), 0);
    }
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

TEST_F(JsonNodeOwnership, ReleasesADocumentThatIsRefused) {
    EXPECT_THROW(JsonNode::fromString(R"({"v": [1, 2], "w": )"), std::runtime_error);
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

TEST_F(JsonNodeOwnership, LeavesTheDocumentToItsOwnerWhenABorrowedNodeGoes) {
    const JsonNode document = load();
    {
        const JsonNode borrowed = document.get("w");
        const std::vector<JsonNode> elements = document.get("v").asArray();
        const JsonNode copy = copyOf(borrowed);
    }
    EXPECT_TRUE(isIntact(document));
}

TEST_F(JsonNodeOwnership, KeepsTheDocumentWhileACopyLives) {
    JsonNode assigned;
    std::vector<JsonNode> constructed;
    {
        const JsonNode document = load();
        constructed.push_back(document);
        assigned = document;
    }
    EXPECT_TRUE(isIntact(assigned));
    assigned = JsonNode();
    EXPECT_TRUE(isIntact(constructed.front()));
}

TEST_F(JsonNodeOwnership, KeepsTheOriginalWhenACopyGoes) {
    const JsonNode document = load();
    { const JsonNode copy = copyOf(document); }
    EXPECT_TRUE(isIntact(document));
}

// These tests check moved-from objects, so clang-tidy's warnings about them are silenced.

TEST_F(JsonNodeOwnership, EmptiesWhatIsMovedFrom) {
    JsonNode document = load();
    const JsonNode taken = std::move(document);
    EXPECT_TRUE(isIntact(taken));
    EXPECT_THROW(document.get("w"), std::runtime_error);  // NOLINT

    JsonNode assigned = load();
    JsonNode source = load();
    assigned = std::move(source);
    EXPECT_TRUE(isIntact(assigned));
    EXPECT_THROW(source.get("w"), std::runtime_error);  // NOLINT
}

TEST_F(JsonNodeOwnership, MovesABorrowedNode) {
    const JsonNode document = load();
    JsonNode borrowed = document.get("w");
    const JsonNode taken = std::move(borrowed);
    EXPECT_EQ(taken.get("x").asReal(), 3.5);
    EXPECT_THROW(borrowed.get("x"), std::runtime_error);  // NOLINT
}

TEST_F(JsonNodeOwnership, SurvivesAssignmentToItself) {
    JsonNode document = load();
    document = same(document);
    EXPECT_TRUE(isIntact(document));
    document = std::move(same(document));
    EXPECT_TRUE(isIntact(document));

    JsonNode borrowed = document.get("w");
    borrowed = same(borrowed);
    borrowed = std::move(same(borrowed));
    EXPECT_EQ(borrowed.get("x").asReal(), 3.5);
}

TEST_F(JsonNodeOwnership, ReleasesWhatAnAssignmentReplaces) {
    JsonNode document = load();
    document = JsonNode::fromString("{}");
    EXPECT_THROW(document.get("w"), std::runtime_error);
    document = JsonNode();
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

TEST_F(JsonNodeOwnership, ChangesBetweenOwningAndBorrowing) {
    const JsonNode document = load();
    JsonNode node = load();
    node = document.get("w");  // releases its own document, borrows from the other
    EXPECT_EQ(node.get("x").asReal(), 3.5);
    node = load();
    EXPECT_TRUE(isIntact(node));
}

TEST_F(JsonNodeOwnership, CopiesNothing) {
    const JsonNode empty;
    JsonNode assigned = load();
    assigned = copyOf(empty);
    EXPECT_THROW(assigned.get("w"), std::runtime_error);
}

TEST_F(JsonNodeOwnership, LeavesReferencesAloneWhenReadOnSeveralThreads) {
    const JsonNode document = load();
    bool intact[2] = {true, true};
    const auto readOften = [&document](bool& result) {
        for (int i = 0; i < 1000; ++i) {
            const std::vector<JsonNode> elements = document.get("v").asArray();
            result = result && isIntact(document) && elements.back().asInteger() == 2;
        }
    };
    std::thread first(readOften, std::ref(intact[0]));
    std::thread second(readOften, std::ref(intact[1]));
    first.join();
    second.join();
    EXPECT_TRUE(intact[0] && intact[1]);
}

}  // namespace
