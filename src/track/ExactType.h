// SPDX-License-Identifier: Apache-2.0
// Whether the library knows what the virtual functions of a track do.
#pragma once

#include <veskar/Track.h>

#include <typeinfo>

namespace Veskar {

/// @param track any track
/// @return whether it is a T and not one of a user's own subclass. Compares addresses, which is
/// much
///         quicker than the names behind them; where a program has two descriptions of a type the
///         answer is no, and the caller asks the virtual functions.
template <typename T>
bool isExactly(const Track& track) {
    return &typeid(track) == &typeid(T);
}

}  // namespace Veskar
