// SPDX-License-Identifier: Apache-2.0
#include "evaluate/SceneSpool.h"

#include <algorithm>

namespace Workbench {

template <typename Object>
std::vector<SceneSpool::Member> SceneSpool::membersOf(const std::vector<Object>& objects,
                                                      const std::vector<Membership>& parts) {
    std::vector<Member> members;
    members.reserve(objects.size());
    for (const Object& object : objects) {
        members.push_back(
            {object.position.x(), object.position.y(), object.number, -1, parts[members.size()]});
    }
    return members;
}

void SceneSpool::write(const PartedScene& scene) {
    spool_.write(membersOf(scene.scene.instant.truths, scene.truths));
    std::vector<Member> tracks = membersOf(scene.scene.instant.tracks, scene.tracks);
    for (const auto& [i, j] : scene.scene.matches) {
        tracks[static_cast<std::size_t>(j)].partner = i;
    }
    spool_.write(tracks);
}

PartedScene SceneSpool::read() {
    PartedScene result;
    auto& [instant, near, matches] = result.scene;
    for (const Member& member : spool_.read<Member>()) {
        TrueObject& truth = instant.truths.emplace_back();
        truth.number = member.number;
        truth.position = {member.x, member.y};
        result.truths.push_back(member.parts);
    }
    for (const Member& member : spool_.read<Member>()) {
        if (member.partner >= 0) {
            matches.emplace_back(member.partner, static_cast<int>(instant.tracks.size()));
        }
        JudgedTrack& track = instant.tracks.emplace_back();
        track.number = member.number;
        track.position = {member.x, member.y};
        result.tracks.push_back(member.parts);
    }
    std::sort(matches.begin(), matches.end());
    return result;
}

}  // namespace Workbench
