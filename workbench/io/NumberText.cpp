// SPDX-License-Identifier: Apache-2.0
#include "io/NumberText.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace Workbench {

void appendQuoted(std::string& text, std::string_view value) {
    const bool isPlain = std::all_of(value.begin(), value.end(), [](char c) {
        return c >= ' ' && c <= '~' && c != '"' && c != '\\';
    });
    if (isPlain) {
        text += '"';
        text += value;
        text += '"';
        return;
    }
    text += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace Workbench
