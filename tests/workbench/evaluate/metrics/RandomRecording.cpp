// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/RandomRecording.h"

#include "evaluate/Instants.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <set>
#include <utility>

namespace Workbench {
namespace {

constexpr std::size_t mostTrackIds = 9;

class Generator {
public:
    Generator(unsigned seed, Mishaps& count)
        : random_(seed), happened_(count), isOnGrid_(seed % 3 == 0) {
        noise_ = share(0.0, 1.5);
        missing_ = share(0.0, 0.4);
        wrong_ = share(0.0, 0.3);
        const int objects = isOnGrid_ ? 1 + number(4) : 1 + number(5);
        for (int i = 0; i < objects; ++i) {
            Walker walker;
            walker.id = 100 * i - 150;
            walker.position = {share(0.0, 6.0), share(0.0, 3.0)};
            walker.step = {share(-0.7, 0.7), share(-0.3, 0.3)};
            walker.trackId = freshTrackId();
            walkers_.push_back(walker);
        }
    }

    std::vector<Instant> run() {
        const int length = 1 + number(isOnGrid_ ? 8 : 20);
        std::vector<Instant> instants;
        instants.reserve(static_cast<std::size_t>(length));
        for (int i = 0; i < length; ++i) {
            instants.push_back(instant(0.1 * i));
        }
        return instants;
    }

private:
    struct Walker {
        int id = 0;
        int trackId = 0;
        Eigen::Vector2d position;
        Eigen::Vector2d step;
        bool isPresent = true;
    };

    int number(int limit) {
        return static_cast<int>(random_() % static_cast<std::uint32_t>(limit));
    }
    double share(double from, double to) {
        return from + (to - from) * static_cast<double>(random_()) / 4294967296.0;
    }
    bool happens(double probability) { return share(0.0, 1.0) < probability; }

    /// Unlike std::shuffle, the same on every machine.
    template <typename Item>
    void shuffle(std::vector<Item>& items) {
        for (int left = static_cast<int>(items.size()); left > 1; --left) {
            std::swap(items[static_cast<std::size_t>(left) - 1],
                      items[static_cast<std::size_t>(number(left))]);
        }
    }

    Eigen::Vector2d placed(const Eigen::Vector2d& position) const {
        return isOnGrid_ ? Eigen::Vector2d(position.array().round()) : position;
    }

    /// A new id, or one that no object has now.
    int freshTrackId() {
        if (trackIds_.size() < mostTrackIds) {
            trackIds_.push_back(7 + 13 * static_cast<int>(trackIds_.size()));
            return trackIds_.back();
        }
        std::set<int> held;
        for (const Walker& walker : walkers_) {
            held.insert(walker.trackId);
        }
        return *std::find_if(trackIds_.begin(), trackIds_.end(),
                             [&](int id) { return held.count(id) == 0; });
    }

    void confuse(Walker& walker) {
        if (happens(0.1)) {
            Walker& other =
                walkers_[static_cast<std::size_t>(number(static_cast<int>(walkers_.size())))];
            happened_.swaps += other.id != walker.id ? 1 : 0;
            std::swap(walker.trackId, other.trackId);
        }
        if (happens(0.1)) {
            walker.trackId = freshTrackId();
            ++happened_.newTracks;
        }
    }

    Instant instant(double time) {
        Instant now;
        now.time = time;
        const bool isBlind = happens(0.1);
        const bool isEmpty = happens(0.1);
        std::set<int> shown;
        const auto show = [&](int id, const Eigen::Vector2d& position) {
            if (!isBlind && shown.insert(id).second) {
                JudgedTrack track;
                track.id = id;
                track.number = numberOf(id);
                track.position = placed(position);
                now.tracks.push_back(track);
            }
        };
        for (Walker& walker : walkers_) {
            walker.position += walker.step;
            confuse(walker);
            const bool wasPresent = std::exchange(walker.isPresent, !happens(0.1));
            happened_.absences += !wasPresent && walker.isPresent ? 1 : 0;
            if (walker.isPresent && !isEmpty) {
                TrueObject truth;
                truth.id = walker.id;
                truth.number = numberOf(walker.id);
                truth.position = placed(walker.position);
                now.truths.push_back(truth);
            }
            if (happens(missing_)) {
                ++happened_.misses;
            } else if (walker.isPresent || happens(0.3)) {
                show(walker.trackId,
                     walker.position + noise_ * Eigen::Vector2d{share(-1, 1), share(-1, 1)});
            }
        }
        if (happens(wrong_)) {
            ++happened_.falseTracks;
            show(freshTrackId(), {share(0.0, 6.0), share(0.0, 3.0)});
        }
        shuffle(now.truths);
        shuffle(now.tracks);
        happened_.withoutTruth += now.truths.empty() && !now.tracks.empty() ? 1 : 0;
        happened_.withoutTracks += now.tracks.empty() && !now.truths.empty() ? 1 : 0;
        happened_.withNothing += now.tracks.empty() && now.truths.empty() ? 1 : 0;
        return now;
    }

    std::mt19937 random_;
    Mishaps& happened_;
    bool isOnGrid_;
    double noise_ = 0.0;    ///< m
    double missing_ = 0.0;  ///< probability
    double wrong_ = 0.0;    ///< probability
    std::vector<int> trackIds_;
    std::vector<Walker> walkers_;
};

}  // namespace

std::vector<Instant> randomRecording(unsigned seed, Mishaps& happened) {
    return Generator(seed, happened).run();
}

}  // namespace Workbench
