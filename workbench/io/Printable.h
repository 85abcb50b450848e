// SPDX-License-Identifier: Apache-2.0
// Text from files on a terminal.
#pragma once

#include <algorithm>
#include <string>

namespace Workbench {

/// What stands in a file may be any bytes, and a terminal should not obey them.
///
/// @param text one line, without line end
/// @return the text with a question mark for every control character
inline std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    return text;
}

}  // namespace Workbench
