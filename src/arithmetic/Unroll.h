// SPDX-License-Identifier: Apache-2.0
// Loops of a fixed length written out.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

namespace Veskar {

/// Calls f with std::integral_constant 0, 1, ... n - 1, without a loop.
template <typename F, std::size_t... k>
void unroll(std::index_sequence<k...> /*numbers*/, [[maybe_unused]] F f) {
    (..., f(std::integral_constant<std::size_t, k>()));
}
template <std::size_t n, typename F>
void unroll(F f) {
    unroll(std::make_index_sequence<n>(), f);
}

}  // namespace Veskar
