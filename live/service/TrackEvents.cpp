// SPDX-License-Identifier: Apache-2.0
#include "live/service/TrackEvents.h"

#include "host/json/LineText.h"

#include <utility>

namespace Veskar::Live {

std::vector<std::string> TrackEvents::update(const Host::FusedFrame& frame, UtcTime utc) {
    std::vector<std::string> events;
    const std::string time = utcText(utc);
    const auto tell = [&](const char* event, std::int32_t id, const State& state) {
        Host::Internal::LineText text;
        text += R"({"event":")";
        text += event;
        text += R"(","time":")";
        text += time;
        text += R"(","id":)";
        text.addInteger(id);
        text += R"(,"class":)";
        text.addQuoted(state.className);
        text += state.isConfirmed ? R"(,"confirmed":true)" : R"(,"confirmed":false)";
        if (!state.tags.empty()) {
            text += R"(,"tags":[)";
            for (const std::string& tag : state.tags) {
                text += &tag == &*state.tags.begin() ? "" : ",";
                text.addQuoted(tag);
            }
            text += ']';
        }
        text += '}';
        events.push_back(text.string());
    };
    std::map<std::int32_t, State> present;
    for (const Host::FusedTrack& track : frame.tracks) {
        State state{track.labels.objectClass.name, track.confirmed,
                    track.tags.value_or(std::set<std::string>())};
        const auto before = known_.find(track.id);
        const State former = before == known_.end() ? State() : before->second;
        if (before == known_.end()) {
            tell("appeared", track.id, state);
        }
        if (state.isConfirmed && !former.isConfirmed) {
            tell("confirmed", track.id, state);
        }
        if (state.tags != former.tags) {
            tell("tagged", track.id, state);
        }
        present.emplace(track.id, std::move(state));
    }
    for (const auto& [id, state] : known_) {
        if (present.count(id) == 0) {
            tell("disappeared", id, state);
        }
    }
    known_ = std::move(present);
    return events;
}

}  // namespace Veskar::Live
