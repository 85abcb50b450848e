// SPDX-License-Identifier: Apache-2.0
// Keeps the scenes of a whole recording for a second pass.
#pragma once

#include "evaluate/JudgedScene.h"
#include "io/Spool.h"

#include <cstdint>
#include <vector>

namespace Workbench {

/// The parts of a scene that a member belongs to; -1: none.
struct Membership {
    std::int32_t classIndex = -1;
    std::int32_t band = -1;
};

/// A scene with the parts of its members. Both of a match belong to the same ones.
struct PartedScene {
    JudgedScene scene;
    std::vector<Membership> truths;
    std::vector<Membership> tracks;
};

/// Stores of each scene what the second pass of the metrics reads: numbers, positions, parts and
/// matches; 32 bytes a member.
class SceneSpool {
public:
    void write(const PartedScene& scene);
    /// Lets reading begin with the first scene.
    void rewind() { spool_.rewind(); }
    /// @return the next scene with what was stored, without near pairs
    PartedScene read();

private:
    struct Member {
        double x;  ///< m
        double y;
        std::int32_t number;
        std::int32_t partner;  ///< the matched object of a track, by place; -1: none
        Membership parts;
    };

    template <typename Object>
    static std::vector<Member> membersOf(const std::vector<Object>& objects,
                                         const std::vector<Membership>& parts);

    Spool spool_;
};

}  // namespace Workbench
