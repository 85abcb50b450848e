// SPDX-License-Identifier: Apache-2.0
// A vector for the numbers of rows and columns.
#pragma once

#include <cstddef>
#include <vector>

namespace Veskar {

/// A vector that also takes int indices: rows and columns of an assignment are ints, because -1
/// stands for none. An index must not be negative.
template <typename T>
class IntIndexed : public std::vector<T> {
public:
    using std::vector<T>::vector;
    using std::vector<T>::operator[];

    T& operator[](int i) { return (*this)[static_cast<std::size_t>(i)]; }
    const T& operator[](int i) const { return (*this)[static_cast<std::size_t>(i)]; }
};

}  // namespace Veskar
