// SPDX-License-Identifier: Apache-2.0
#include "recording/FileFormat.h"

#include "io/LineReader.h"

#include <string_view>

#include <nlohmann/json.hpp>

namespace Workbench {

std::string formatOf(const std::string& path) {
    LineReader lines(path);
    std::string_view line;
    if (!lines.next(line)) {
        return {};
    }
    const auto header = nlohmann::json::parse(line, nullptr, false);
    const auto format = header.is_object() ? header.find("format") : header.end();
    return format != header.end() && format->is_string() ? format->get<std::string>()
                                                         : std::string();
}

}  // namespace Workbench
