// SPDX-License-Identifier: Apache-2.0
// docs/configuration.md must agree with the parser and the shipped files on every key.
#include "config/ConfigKeys.h"
#include "support/JsonDocument.h"

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using VeskarTest::ConfigKey;
using VeskarTest::configKeys;
using VeskarTest::JsonDocument;
using VeskarTest::KeyValue;

std::string nameOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// A row of the tables.
struct Row {
    std::string type;
    std::string fallback;
    std::string shipped;
};

/// @return the text between the first two backticks
std::string inBackticks(const std::string& text) {
    const std::size_t begin = text.find('`');
    const std::size_t end = text.find('`', begin + 1);
    return end == std::string::npos ? std::string() : text.substr(begin + 1, end - begin - 1);
}

std::map<std::string, Row> readRows() {
    std::map<std::string, Row> rows;
    std::istringstream document(VeskarTest::readFile("docs/configuration.md"));
    for (std::string line; std::getline(document, line);) {
        if (line.rfind("| `", 0) != 0) {
            continue;
        }
        std::vector<std::string> cells;
        std::istringstream row(line.substr(2));
        for (std::string cell; std::getline(row, cell, '|');) {
            cells.push_back(cell.substr(0, cell.find_last_not_of(' ') + 1));
        }
        EXPECT_EQ(cells.size(), 7U) << line;
        const auto value = [&](std::size_t column) { return cells.at(column).substr(1); };
        EXPECT_TRUE(
            rows.emplace(inBackticks(cells[0]), Row{value(1), value(3), inBackticks(cells[6])})
                .second)
            << "twice: " << line;
    }
    return rows;
}

class Documentation : public testing::Test {
protected:
    const std::map<std::string, Row> rows = readRows();
    /// But for the section of the host, which docs/host-adapter.md explains.
    const JsonDocument fusion = JsonDocument("config/fusion.json").erase("veskarHost");
    const JsonDocument camera{"config/camera.json"};
};

TEST_F(Documentation, StatesTheShippedValues) {
    for (const JsonDocument* shipped : {&fusion, &camera}) {
        for (const std::string& path : shipped->leaves()) {
            ASSERT_EQ(rows.count(nameOf(path)), 1U) << path;
            JsonDocument documented = *shipped;
            documented.set(path, rows.at(nameOf(path)).shipped);
            EXPECT_EQ(documented.text(path), shipped->text(path)) << path;
        }
    }
}

TEST_F(Documentation, KnowsNoOtherKeys) {
    std::vector<std::string> names = {"gainNegative", "rotation"};
    for (const JsonDocument* shipped : {&fusion, &camera}) {
        for (const std::string& path : shipped->leaves()) {
            names.push_back(nameOf(path));
        }
    }
    std::vector<std::string> documented;
    for (const auto& row : rows) {
        documented.push_back(row.first);
    }
    EXPECT_THAT(documented, testing::UnorderedElementsAreArray(names));
}

TEST_F(Documentation, StatesTypes) {
    const std::string types[] = {"boolean", "integer", "real"};
    for (const ConfigKey& key : configKeys()) {
        EXPECT_EQ(rows.at(key.name).type, types[key.field(Veskar::Config()).index()]) << key.name;
    }
}

/// @return the default as written in the tables: a literal, or a quotient of two numbers
KeyValue readDefault(const std::string& text, const KeyValue& type) {
    if (std::holds_alternative<bool>(type)) {
        return text == "true";
    }
    std::istringstream words(text);
    if (std::holds_alternative<int>(type)) {
        int value = 0;
        words >> value;
        return value;
    }
    double value = 0.0;
    double divisor = 1.0;
    char slash = 0;
    words >> value >> slash >> divisor;
    return slash == '/' ? value / divisor : value;
}

TEST_F(Documentation, StatesDefaults) {
    for (const ConfigKey& key : configKeys()) {
        const std::string& documented = rows.at(key.name).fallback;
        if (key.fallback) {
            EXPECT_EQ(readDefault(documented, *key.fallback), *key.fallback) << key.name;
        } else {
            EXPECT_EQ(documented, "required") << key.name;
        }
    }
    EXPECT_EQ(rows.at("autocalibrationHumanMinAspect").fallback, "0.3");
    EXPECT_EQ(rows.at("autocalibrationHumanMaxAspect").fallback, "0.65");
    for (const std::string& path : camera.leaves()) {
        EXPECT_EQ(rows.at(nameOf(path)).fallback, "required") << path;
    }
}

}  // namespace
