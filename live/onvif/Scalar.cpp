// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/Scalar.h"

#include "host/json/LineText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Veskar::Live {
namespace {

std::optional<double> numberOf(std::string_view text) {
    text = trimmed(text);
    // XML Schema allows a plus sign, std::from_chars does not.
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const auto [rest, fault] = std::from_chars(text.data(), end, value);
    const bool isNumber = fault == std::errc() && rest == end && std::isfinite(value);
    return isNumber ? std::optional(value) : std::nullopt;
}

std::optional<std::string> integerOf(std::string_view text) {
    text = trimmed(text);
    const bool isNegative = !text.empty() && text[0] == '-';
    if (isNegative || (!text.empty() && text[0] == '+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size() - 1));
    return (isNegative && text != "0" ? "-" : "") + std::string(text);
}

template <typename... Forms>
struct Overloaded : Forms... {
    using Forms::operator()...;
};
template <typename... Forms>
Overloaded(Forms...) -> Overloaded<Forms...>;

}  // namespace

std::string_view trimmed(std::string_view text) {
    constexpr const char* space = " \t\r\n";
    const std::size_t first = text.find_first_not_of(space);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

std::string quotedShortly(std::string_view text) {
    constexpr std::size_t longest = 40;
    Host::Internal::LineText quoted;
    quoted.addQuoted(text.substr(0, longest));
    return quoted.string();
}

std::optional<double> numberIn(const Scalar& value) {
    using Number = std::optional<double>;
    return std::visit(
        Overloaded{[](std::string_view text) { return numberOf(text); },
                   [](std::int64_t number) -> Number { return static_cast<double>(number); },
                   [](double number) -> Number { return number; },
                   [](const Real& real) -> Number { return real.value; },
                   [](bool) -> Number { return std::nullopt; },
                   [](std::monostate) -> Number { return std::nullopt; }},
        value);
}

std::optional<std::string> integerIn(const Scalar& value) {
    if (const auto* text = std::get_if<std::string_view>(&value)) {
        return integerOf(*text);
    }
    const auto* number = std::get_if<std::int64_t>(&value);
    return number == nullptr ? std::nullopt : std::optional(std::to_string(*number));
}

std::string textOf(const Scalar& value) {
    return std::visit(Overloaded{[](std::string_view text) { return std::string(trimmed(text)); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](double number) { return Host::Internal::shortestText(number); },
                                 [](const Real& real) {
                                     Host::Internal::LineText text;
                                     text.addNumber(real.value, real.decimals);
                                     return text.string();
                                 },
                                 [](bool truth) { return std::string(truth ? "true" : "false"); },
                                 [](std::monostate) { return std::string(); }},
                      value);
}

}  // namespace Veskar::Live
