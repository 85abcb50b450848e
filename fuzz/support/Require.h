// SPDX-License-Identifier: Apache-2.0
// What a fuzz target says when something does not hold.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace VeskarFuzz {

/// Ends the process, so that the fuzzer keeps the input, when something does not hold.
///
/// @param holds what must hold
/// @param what what does not, otherwise
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace VeskarFuzz
