// SPDX-License-Identifier: Apache-2.0
#include "io/LineParser.h"

#include "io/TextFile.h"

#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

static_assert(LineReader::padding >= simdjson::SIMDJSON_PADDING);

// simdjson is fast; nlohmann's parser gives the place of the error.
std::string reasonFor(std::string_view line, simdjson::error_code fault) {
    try {
        const nlohmann::json document = nlohmann::json::parse(line);
    } catch (const nlohmann::json::exception& error) {
        return reasonOf(error);
    }
    return simdjson::error_message(fault);
}

}  // namespace

LineValue LineParser::parse(const LineReader& lines, std::string_view line) {
    simdjson::dom::element value;
    const auto fault = parser_.parse(line.data(), line.size(), false).get(value);
    if (fault != simdjson::SUCCESS) {
        const char* cut = lines.lastLineIsOpen() ? "the line is cut off: " : "";
        throw InputError(cut + reasonFor(line, fault));
    }
    return value;
}

}  // namespace Workbench
