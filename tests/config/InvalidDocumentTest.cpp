// SPDX-License-Identifier: Apache-2.0
// The documents in tests/config/invalid with the exact texts of their rejection: NAME.error belongs
// to NAME.json. Its first line is the text of the exception ({file} stands for the path), the other
// lines are those of the system log.
#include <veskar/Config.h>

#include "SourceDirectory.h"
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

/// @return the text of the exception of parsing, then the logged lines
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

/// One of the documents.
struct Document {
    explicit Document(const std::string& name)
        : path(folder / (name + ".json")),
          text(readFile(path)),
          expected(readFile(folder / (name + ".error"))) {}

    std::string path;
    std::string text;
    std::string expected;
};

TEST(InvalidDocuments, AreRefusedAsFiles) {
    for (const std::string& name : names(".json")) {
        SCOPED_TRACE(name);
        const Document document(name);
        EXPECT_EQ(refusal([&] { Config::parse(document.path); }),
                  replaced(document.expected, "{file}", document.path));
    }
}

TEST(InvalidDocuments, AreRefusedAsTexts) {
    for (const std::string& name : names(".json")) {
        SCOPED_TRACE(name);
        const Document document(name);
        const std::size_t nul = document.text.find('\0');
        // The message repeats the whole text; what() shows it up to its first NUL byte.
        const std::string words =
            nul == std::string::npos
                ? replaced(document.expected, "json from file: {file}",
                           "json from string: " + document.text)
                : "Failed to load json from string: " + document.text.substr(0, nul) + "\n";
        EXPECT_EQ(refusal([&] { Config::parse_json_string(document.text); }), words);
    }
}

TEST(InvalidDocuments, AreManyAndComplete) {
    EXPECT_EQ(names(".json"), names(".error"));
    EXPECT_GE(names(".json").size(), 40U);
}

}  // namespace
