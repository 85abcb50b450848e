// SPDX-License-Identifier: Apache-2.0
// The value of an element or an attribute.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace Veskar::Live {

/// A number to be written with few digits.
struct Real {
    double value = 0.0;
    int decimals = 6;  ///< digits behind the point, 0 to 9
};

/// The value of an element or an attribute. In XML it is always text; JSON may write numbers and
/// truth values without quotes. Borrows text.
using Scalar = std::variant<std::monostate, std::string_view, std::int64_t, double, Real, bool>;

/// @param value a value
/// @return the number that it is or spells (xs:float without its INF and NaN); nothing otherwise
std::optional<double> numberIn(const Scalar& value);

/// @param value a value
/// @return the integer in its shortest spelling, of any length: "-12"; nothing when it is or spells
///         no integer
std::optional<std::string> integerIn(const Scalar& value);

/// @param value a value
/// @return its text as it stands in an XML document; empty when there is none
std::string textOf(const Scalar& value);

/// @param text any text
/// @return its first characters in quotes, with control characters escaped: for messages, which may
///         reach a terminal
std::string quotedShortly(std::string_view text);

/// @param text any text
/// @return it without white space at both ends
std::string_view trimmed(std::string_view text);

}  // namespace Veskar::Live
