// SPDX-License-Identifier: Apache-2.0
// The metrics of one tracker over all parts of the scene.
#pragma once

#include <veskar-host/Projection.h>

#include "evaluate/EvaluationOptions.h"
#include "evaluate/SceneSpool.h"
#include "evaluate/Scorecard.h"
#include "evaluate/metrics/PairNumbers.h"
#include "recording/Header.h"

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Workbench {

/// GOSPA of one tracker at one instant of the truth, over the whole scene.
struct GospaMoment {
    double time = 0.0;  ///< s
    Gospa gospa;        ///< when the truth is incomplete, its false tracks and its distance are
                        ///< meaningless
    std::vector<std::pair<int, int>> matches;  ///< ids (object, track), as matched by CLEAR MOT
    std::vector<int> objects;                  ///< ids of all evaluated objects
};

/// The parts of a scene.
class SceneParts {
public:
    /// @param installation the header of the recording
    /// @param projection of its camera; must outlive this
    /// @param options what to evaluate
    SceneParts(const RecordingHeader& installation, const Projection& projection,
               const EvaluationOptions& options)
        : radar_(installation.radar), projection_(projection), options_(options) {}

    /// @param classes those known by now, the parts of a scene beside its range bands
    Membership membershipOf(const std::string& className, const Eigen::Vector2d& position,
                            const std::vector<std::string>& classes) const;
    /// @return whether tracks without an object are evaluated at this position
    bool isEvaluated(const Eigen::Vector2d& position) const;
    /// @return number of range bands
    std::size_t bands() const { return options_.bands.size(); }
    const EvaluationOptions& options() const { return options_; }
    /// @return position of the sensors on the ground, m
    Eigen::Vector2d observer() const { return projection_.origin().head<2>(); }

private:
    RadarSetup radar_;
    const Projection& projection_;
    EvaluationOptions options_;
};

/// The truth at one time, prepared for all trackers.
struct TrueMoment {
    PartedScene truths;                ///< without tracks
    std::vector<bool> isEvaluated;     ///< by object
    std::vector<std::string> classes;  ///< known by now
};

/// Collects the metrics of one tracker. The judgements of different trackers share nothing that
/// changes, so that each may be made on a thread of its own.
class TrackerJudgement {
public:
    /// @param sceneParts must outlive this
    explicit TrackerJudgement(const SceneParts& sceneParts);

    /// @param truth at the times of the recording
    /// @param tracks the tracker's tracks at that time
    /// @throw InputError when the temporary file cannot be written
    void judge(const TrueMoment& truth, std::vector<JudgedTrack> tracks);
    /// Passes all moments a second time, as some metrics need it.
    /// @throw InputError when what was stored meanwhile cannot be read
    /// @throw Interrupted when a signal has come
    void judgeAgain();

    /// The metrics of each part; those of a class from the first moment that knew it.
    struct Cards {
        Scorecard whole;
        std::vector<Scorecard> classes;
        std::vector<Scorecard> bands;
    };
    const Cards& cards() const { return cards_; }
    /// @return of the whole scene, if they are kept
    const std::vector<GospaMoment>& moments() const { return moments_; }

private:
    PartedScene sceneOf(const TrueMoment& truth, std::vector<JudgedTrack> tracks);
    Scorecard newCard() const;

    const SceneParts& parts_;
    Cards cards_;
    std::vector<GospaMoment> moments_;
    std::unordered_map<int, int> trackNumbers_;
    PairNumbers pairNumbers_;
    SceneSpool scenes_;
    int judged_ = 0;
};

}  // namespace Workbench
