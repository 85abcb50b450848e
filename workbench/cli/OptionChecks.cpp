// SPDX-License-Identifier: Apache-2.0
#include "cli/OptionChecks.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <system_error>

namespace Workbench {

CLI::Validator number() {
    const auto check = [](const std::string& text) {
        double value = 0.0;
        const bool isNumber = CLI::detail::lexical_cast(text, value) && !std::isnan(value);
        return isNumber ? std::string() : "Value " + text + " is not a number";
    };
    return {check, ""};
}

CLI::Validator within(double least, double most) {
    return CLI::Range(least, most) & number();
}

CLI::Validator wholeNumber() {
    const auto check = [](const std::string& text) {
        std::int64_t value = 0;
        const char* const end = text.data() + text.size();
        const auto [rest, fault] = std::from_chars(text.data(), end, value);
        return fault == std::errc() && rest == end && value >= 0
                   ? std::string()
                   : "Value " + text + " is not an integer from 0 to 9223372036854775807";
    };
    return {check, ""};
}

}  // namespace Workbench
