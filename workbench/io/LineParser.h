// SPDX-License-Identifier: Apache-2.0
// Reads lines of JSON Lines, one at a time.
#pragma once

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/LineReader.h"
#include "io/LineValue.h"

#include <string_view>

#include <simdjson.h>

namespace Workbench {

/// The objects that stand in the lines of a file. One parser serves all lines, so that reading a
/// line allocates nothing.
class LineParser {
public:
    /// @param lines where the line was just read
    /// @param line its text
    /// @param take takes the fields of the object in the line
    /// @return what take returns
    /// @throw InputError what is wrong with the line, behind "FILE:LINE: "
    template <typename Read>
    auto read(const LineReader& lines, std::string_view line, Read take) {
        try {
            return take(LineFields(parse(lines, line)));
        } catch (const InputError& error) {
            throw InputError(lines.place() + ": " + error.what());
        }
    }

private:
    LineValue parse(const LineReader& lines, std::string_view line);

    simdjson::dom::parser parser_;
};

}  // namespace Workbench
