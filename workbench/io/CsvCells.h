// SPDX-License-Identifier: Apache-2.0
// Cells of comma-separated values (RFC 4180) behind the first of a row.
#pragma once

#include "HostLibrary.h"
#include "host/json/LineText.h"

#include <optional>
#include <string_view>

namespace Workbench {

/// Appends a comma and a number; nothing behind the comma when it is not finite.
/// @param row receives the cell
/// @param value the number
/// @param decimals as LineText::addNumber
void addCell(LineText& row, double value, int decimals);
/// As above; nothing behind the comma when there is no number.
/// @param row as above
/// @param value as above
/// @param decimals as above
void addCell(LineText& row, const std::optional<double>& value, int decimals);
/// Appends a comma and a text, in quotes where it needs them.
/// @param row as above
/// @param text the text
void addCell(LineText& row, std::string_view text);

}  // namespace Workbench
