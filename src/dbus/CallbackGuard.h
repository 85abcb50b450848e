// SPDX-License-Identifier: Apache-2.0
// Keeps exceptions away from frames that were not made for them.
#pragma once

namespace Veskar {

/// Runs what a C library, or a host that expects no exception, calls.
///
/// @param failed the answer when the call throws
/// @param call without parameters; what it could not do is left out
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
