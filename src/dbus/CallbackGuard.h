// SPDX-License-Identifier: Apache-2.0
// Keeps exceptions from crossing C code.
#pragma once

namespace Veskar {

/// Runs the body of a function that must not throw, such as a callback of a C library.
///
/// @param failed the answer when the body throws
/// @param call the body
/// @return its answer
template <typename Answer, typename Call>
Answer guarded(Answer failed, Call call) noexcept {
    try {
        return call();
    } catch (...) {
        return failed;
    }
}

}  // namespace Veskar
