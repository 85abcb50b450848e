// SPDX-License-Identifier: Apache-2.0
// Small inputs (configurations, cameras, scenarios, data sets), read as a whole.
#pragma once

#include <exception>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// @param path a file, or "-" for standard input
/// @return its text
/// @throw InputError when it cannot be read
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

/// @param error a fault that the JSON library found
/// @return its text without the library's prefix
std::string reasonOf(const std::exception& error);

}  // namespace Workbench
