// SPDX-License-Identifier: Apache-2.0
// Null tracks stop the process.
#pragma once

#include <memory>

#ifndef _GLIBCXX_ASSERTIONS
#error "Null tracks must stop the process in release builds, too."
#endif

namespace Veskar {

/// The object behind a pointer that must not be null. A null one, handed in by the host, stops the
/// process.
///
/// The standard library asserts that for operator*, but not for operator->. Code that follows a
/// shared pointer of the interface uses this function, never operator->.
template <typename T>
T& dereference(const std::shared_ptr<T>& pointer) {
    return *pointer;
}

}  // namespace Veskar
