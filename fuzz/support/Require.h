// SPDX-License-Identifier: Apache-2.0
// Assertion for fuzz targets.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace VeskarFuzz {

/// Aborts the process when a condition does not hold, so that the fuzzer keeps the input.
///
/// @param holds the condition
/// @param what message when it does not hold
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

}  // namespace VeskarFuzz
