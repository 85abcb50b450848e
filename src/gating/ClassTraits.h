// SPDX-License-Identifier: Apache-2.0
// What association needs to know of a track's class, in one look-up.
#pragma once

#include <veskar/Track.h>

#include <cstddef>

namespace Veskar {

/// What association knows of a class. Groups are numbered, so that comparing them is cheap.
struct ClassTraits {
    static constexpr int noGroup = -1;

    bool supported = false;
    int group = noGroup;  ///< from 0 to groupCount() - 1

    /// @return number of class groups
    static std::size_t groupCount();

    /// @param other a class
    /// @return whether both have a group and it is the same one
    bool agreesWith(const ClassTraits& other) const {
        return group != noGroup && group == other.group;
    }
};

/// @param track any track
/// @return the traits of the class that its getClassName answers
ClassTraits classTraitsOf(const Track& track);

}  // namespace Veskar
