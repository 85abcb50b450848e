// SPDX-License-Identifier: Apache-2.0
#include "io/TextFile.h"

#include "io/InputError.h"
#include "io/LineReader.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {

std::string readText(const std::string& path) {
    LineReader lines(path);
    std::string text;
    std::string_view line;
    while (lines.next(line)) {
        text += line;
        text += '\n';
    }
    return text;
}

nlohmann::json parseJson(const std::string& text, const std::string& name) {
    try {
        return nlohmann::json::parse(text, nullptr, true, true);
    } catch (const nlohmann::json::parse_error& error) {
        const auto end =
            text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
        const auto line = std::count(text.begin(), end, '\n') + 1;
        throw InputError(fmt::format("{}:{}: {}", name, line, reasonOf(error)));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(fmt::format("{}: {}", name, reasonOf(error)));
    }
}

nlohmann::json readJson(const std::string& path) {
    return parseJson(readText(path), path == "-" ? "<stdin>" : path);
}

std::string reasonOf(const std::exception& error) {
    std::string_view text = error.what();
    // "[json.exception.parse_error.101] parse error at line 1, column 5: syntax error ..."
    const std::size_t bracket = text.find("] ");
    if (bracket != std::string_view::npos) {
        text.remove_prefix(bracket + 2);
    }
    const std::size_t place = text.find("parse error at line");
    const std::size_t column = text.find("column ");
    if (place == 0 && column != std::string_view::npos) {
        text.remove_prefix(column);
    }
    // What was found may be any bytes; a terminal should not obey them.
    std::string plain(text);
    std::replace_if(
        plain.begin(), plain.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return plain;
}

}  // namespace Workbench
