// SPDX-License-Identifier: Apache-2.0
// Test oracle: the whole cycle as the rules are written, step by step, without optimisation.
#pragma once

#include <veskar/Config.h>

#include "fusion/LiteralAssociation.h"
#include "fusion/LiteralTrack.h"

#include <cstdint>
#include <deque>
#include <set>

namespace VeskarTest::Literal {

class Fusion {
public:
    explicit Fusion(const Veskar::Config& all) : config_(all.module), associator_(all) {}

    /// @param now the steady clock, nanoseconds
    void cycle(int source, double timestamp, const Tracks& tracks, std::int64_t now);
    void clear();
    /// @return whether rounding may have decided something since the last call
    bool takeDoubt() { return associator_.takeDoubt(); }

    SystemTracks systemTracks;
    int lastId = 0;
    std::map<std::string, int> events;  ///< counts of the events that tests require

private:
    struct Frame {
        double timestamp;
        Tracks tracks;
    };

    void cycleFrame(int source, double timestamp, const Tracks& tracks);
    void predictTracks(double timestamp);
    void update(int source, const Tracks& tracks);
    void continuation(int source, const Tracks& tracks);
    void association(int source, const Tracks& tracks);
    void unmarked(int source);
    void initialize(const std::shared_ptr<Track>& track);
    void management();
    void deleteCopies();
    static void merge(SystemTrack& target, const SystemTrack& other);
    static void fuse(SystemTrack& systemTrack, const std::shared_ptr<Track>& track);

    Veskar::Config::ModuleConfig config_;
    Associator associator_;
    std::map<int, Tracks> lastSensorTracks_;
    std::unordered_set<int> excludedTrackIds_;
    std::unordered_set<int> refusedSet_;
    std::set<std::shared_ptr<SystemTrack>> marked_;
    std::deque<Frame> radarFrameQueue_;
    double lastVideoTimestamp_ = 0.0;
};

}  // namespace VeskarTest::Literal
