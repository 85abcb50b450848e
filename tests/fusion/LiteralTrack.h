// SPDX-License-Identifier: Apache-2.0
// Test oracle: sensor and system tracks as the rules are written, on plain arrays.
#pragma once

#include <veskar/Track.h>

#include "fusion/LiteralEstimate.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VeskarTest::Literal {

/// A label and its probability.
struct Label {
    std::string name = "unknown";
    double probability = 0.0;
};

/// The four labels, in the order class, colour, upper and lower clothing.
using Labels = std::array<Label, 4>;

struct Track {
    virtual ~Track() = default;

    virtual void predict(double t);
    virtual double getAge() const { return source == 0 ? time - startTime : -1.0; }
    virtual std::optional<double> getSpeed() const { return speed; }
    virtual Label getLabel(std::size_t which) const { return labels[which]; }

    Vector6 x{};
    Matrix6 P{};
    double time = 0.0;
    double startTime = 0.0;
    int id = 0;
    int source = 3;
    Labels labels;
    Vector<4> box{};
    double coastingTime = 0.0;
    double probability = 0.0;
    std::optional<double> speed;
    Vector<2> startPosition{};
    bool isConfident = true;
};

/// @return the same track on plain arrays
std::shared_ptr<Track> literal(const Veskar::Track& track);

struct SystemTrack : Track {
    SystemTrack(const std::shared_ptr<Track>& track, int systemId);

    void predict(double t) override;
    double getAge() const override;
    std::optional<double> getSpeed() const override;
    Label getLabel(std::size_t which) const override;

    bool hasTracks(int s) const;
    bool hasCoastingTracks(int s) const;
    void pruneSensorTracksByIdx(int s, int idx);
    void pruneSensorTracksByCoastingTime(int s);
    void updateState(const std::shared_ptr<Track>& track);
    void applyDefusion(const Track& track);
    void updateOriginAndStartTime();
    double getTrackProbability() const;
    void updateTrackProbability(double gain);
    void updateIsConfident();
    void updateLabels(const Track& track);
    const Track& first(int s) const { return *sensorTracks.at(s).begin()->second; }

    std::array<bool, 4> voted{};
    double systemStartTime = 0.0;
    std::map<int, std::map<int, std::shared_ptr<Track>>> sensorTracks;
    std::vector<double> trackProbabilityHistory;
    bool isConfirmed = false;
};

}  // namespace VeskarTest::Literal
