// SPDX-License-Identifier: Apache-2.0
// Small inputs (configurations, cameras, scenarios, data sets), read as a whole.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// @param path a file, or "-" for standard input
/// @return its text
/// @throw InputError when it cannot be read or is longer than LineReader::maximumLineLength
std::string readText(const std::string& path);

/// @param path a JSON file, or "-"; comments are allowed
/// @return the document
/// @throw InputError with file and line of the fault
nlohmann::json readJson(const std::string& path);

/// @param text JSON text of one document
/// @param name file for messages
/// @return the document
/// @throw InputError with file and line of the fault
nlohmann::json parseJson(const std::string& text, const std::string& name);

/// @param line JSON text of one line, without comments
/// @return the document
/// @throw InputError when a key occurs twice in an object or the nesting is too deep
/// @throw nlohmann::json::exception when it is not valid JSON
nlohmann::json parseJsonLine(std::string_view line);

/// Maximum nesting of objects and arrays. Documents need a handful of levels; thousands would
/// exhaust the stack of recursive functions.
constexpr std::size_t deepestNesting = 100;

/// @param error an error of the JSON library
/// @return its text without the library's prefix
std::string reasonOf(const std::exception& error);

}  // namespace Workbench
