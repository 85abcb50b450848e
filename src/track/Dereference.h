// SPDX-License-Identifier: Apache-2.0
// What happens to a null track.
#pragma once

#include <memory>

#ifndef _GLIBCXX_ASSERTIONS
#error "Null tracks must stop the process in release builds, too."
#endif

namespace Veskar {

/// The object behind a pointer that must not be null. A null one, handed in by the host, stops the
/// process.
///
/// That is the doing of the standard library's assertions, which operator* has and operator-> has
/// not: what a shared pointer of the library's interface leads to is reached through here only.
template <typename T>
T& dereference(const std::shared_ptr<T>& pointer) {
    return *pointer;
}

}  // namespace Veskar
