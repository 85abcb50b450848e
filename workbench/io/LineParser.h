// SPDX-License-Identifier: Apache-2.0
// Parses lines of JSON Lines, one at a time.
#pragma once

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/LineReader.h"
#include "io/LineValue.h"

#include <string_view>

#include <simdjson.h>

namespace Workbench {

/// The parser of a file's lines. Its memory is reused, so that reading a line allocates nothing.
class LineParser {
public:
    /// @param lines the reader of the line, for its place
    /// @param line its text
    /// @param take called with the members of the object in the line
    /// @return the result of take
    /// @throw InputError the fault, with its place
    template <typename Read>
    auto read(const LineReader& lines, std::string_view line, Read take) {
        try {
            return take(LineFields(parse(lines, line)));
        } catch (const InputError& error) {
            throw InputError(lines.place(), error);
        }
    }

private:
    LineValue parse(const LineReader& lines, std::string_view line);

    simdjson::dom::parser parser_;
};

}  // namespace Workbench
