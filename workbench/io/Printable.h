// SPDX-License-Identifier: Apache-2.0
// Makes text from files safe for terminals.
#pragma once

#include <algorithm>
#include <string>

namespace Workbench {

/// Files may contain any bytes, and a terminal should not interpret control characters.
///
/// @param text one line, without line end
/// @return the text with a question mark for every control character
inline std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    return text;
}

}  // namespace Workbench
