// SPDX-License-Identifier: Apache-2.0
// The documents in tests/config/invalid, each with the exact words of its refusal: NAME.json is
// refused with what NAME.error says. Its first line is the text of the exception ({file} stands for
// the path), the lines after it are those of the system log.
#include <veskar/Config.h>

#include "support/JsonDocument.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Veskar::Config;
using VeskarTest::readFile;
using VeskarTest::SyslogCapture;

const std::filesystem::path folder = VESKAR_SOURCE_DIR "/tests/config/invalid";

/// @return the names of the files with @p extension, in alphabetical order
std::vector<std::string> names(const std::string& extension) {
    std::vector<std::string> found;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() == extension) {
            found.push_back(file.path().stem());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// @return what parsing throws, then what it logs
template <typename Parse>
std::string refusal(const Parse& parse) {
    const SyslogCapture log;
    std::string words = "accepted\n";
    try {
        parse();
    } catch (const std::exception& error) {
        words = std::string(error.what()) + "\n";
    }
    for (const std::string& line : log.errors()) {
        words += line;
    }
    return words;
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

class InvalidDocument : public testing::TestWithParam<std::string> {
protected:
    const std::string path = folder / (GetParam() + ".json");
    const std::string expected = readFile(folder / (GetParam() + ".error"));
};

TEST_P(InvalidDocument, IsRefusedAsFile) {
    EXPECT_EQ(refusal([&] { Config::parse(path); }), replaced(expected, "{file}", path));
}

TEST_P(InvalidDocument, IsRefusedAsText) {
    const std::string text = readFile(path);
    const std::size_t nul = text.find('\0');
    // The whole text is repeated; a reader of what() sees it up to its first NUL byte.
    const std::string words =
        nul == std::string::npos
            ? replaced(expected, "json from file: {file}", "json from string: " + text)
            : "Failed to load json from string: " + text.substr(0, nul) + "\n";
    EXPECT_EQ(refusal([&] { Config::parse_json_string(text); }), words);
}

INSTANTIATE_TEST_SUITE_P(Corpus, InvalidDocument, testing::ValuesIn(names(".json")),
                         [](const auto& document) {
                             std::string name = document.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(InvalidDocuments, AreManyAndComplete) {
    EXPECT_EQ(names(".json"), names(".error"));
    EXPECT_GE(names(".json").size(), 40U);
}

}  // namespace
