// SPDX-License-Identifier: Apache-2.0
// Reads a recording or fused tracks to the end.
#pragma once

namespace VeskarFuzz {

/// @param reader has a function next, which returns nothing at the end
/// @throw as next
template <typename Reader>
void readAll(Reader& reader) {
    while (reader.next()) {
    }
}

}  // namespace VeskarFuzz
