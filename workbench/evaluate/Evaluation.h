// SPDX-License-Identifier: Apache-2.0
// Fused tracks and those of each sensor against the truth of a recording.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>

#include "evaluate/Picture.h"
#include "evaluate/Scorecard.h"
#include "evaluate/metrics/Assignment.h"
#include "host/duties/SensorSupervisor.h"
#include "recording/Recording.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Workbench {

/// What an evaluation may be asked for.
struct EvaluationOptions {
    double cutoff = 5.0;                               ///< see Scorecard, m
    std::vector<double> bands{0.0, 20.0, 40.0, 80.0};  ///< where range bands begin, m
    std::vector<int> confirmationHits{3, 8, 15};       ///< settings of the single sensors
    double coastingLimit = 0.5;                        ///< the same for every tracker, s
    /// Judge only where both sensors can see; otherwise the whole scene.
    bool commonFieldOfView = true;
};

/// The figures of one tracker over one part of the scene.
struct TrackerFigures {
    std::string tracker;  ///< "fusion", "radar 3", "video 15"
    std::vector<Figure> figures;
};

/// The figures of all trackers over one part of the scene.
struct PartFigures {
    std::string part;  ///< "all", a class, or a range band
    std::vector<TrackerFigures> trackers;
};

/// One tracker at one moment of the truth, in the whole scene.
struct GospaMoment {
    double time = 0.0;  ///< s
    Gospa gospa;        ///< when the truth is incomplete, its false tracks and so the distance mean
                        ///< nothing
    std::map<int, int> matches;  ///< by CLEAR MOT: the track of each object that has one, by ids
};

/// GOSPA of one tracker over time.
struct GospaSeries {
    std::string tracker;  ///< as in TrackerFigures
    std::vector<GospaMoment> moments;
};

/// Judges fused tracks by the truth of a recording, and beside them its sensors' own tracks, on the
/// same frames, in the same way and at the same moments.
///
/// At every moment of the truth the tracks are those that have arrived by then, moved there with
/// constant velocity. A single sensor's track counts as confirmed once it has been seen a number of
/// times under its id.
class Evaluation {
public:
    /// @param installation the header of the recording
    /// @param config configuration of the fusion; the sensors' tracks are read with its noise
    /// @param options what is asked for
    Evaluation(const RecordingHeader& installation, const Veskar::Config& config,
               const EvaluationOptions& options);

    /// @param frame what the fusion knew after a frame, in the order of arrival: at the latest
    ///              before the first truth that is later than its arrival
    void add(const FusedFrame& frame);
    /// @param line in the order of the recording
    void add(const RecordingLine& line);

    /// @return the whole scene, then the classes, then the range bands
    std::vector<PartFigures> figures() const;
    /// @return moments that were judged
    int instants() const { return judged_; }
    /// @return GOSPA of every judged moment, of the fusion and of each sensor
    std::vector<GospaSeries> gospaOverTime() const;

private:
    struct Judged {
        std::string name;
        std::optional<Veskar::Source> source;  ///< none: the fusion
        int hits;                              ///< confirmation setting of a sensor
        Picture picture;
        std::map<std::string, Scorecard> cards;  ///< by part
        std::vector<GospaMoment> moments;        ///< of the whole scene
    };
    using SensorTracks = std::vector<Picture::Reported>;

    void takeSensor(const SensorFrame& frame);
    void predictSlowSensors(double time);
    void show(Veskar::Source source, double time,
              const std::vector<std::shared_ptr<Veskar::Track>>& tracks);
    void judge(const TruthFrame& truth);
    void judge(Judged& tracker, const TruthFrame& truth);
    Scorecard& card(Judged& tracker, const std::string& part);
    bool isInCommonView(const Eigen::Vector2d& position) const;
    std::string bandName(double from) const;
    std::string bandOf(const Eigen::Vector2d& position) const;

    RecordingHeader header_;
    EvaluationOptions options_;
    HostAdapter adapter_;
    SensorSupervisor duties_;
    std::vector<Judged> trackers_;
    std::map<std::pair<Veskar::Source, int>, int> hitsOfTrack_;
    std::vector<std::string> classes_;
    int judged_ = 0;
};

}  // namespace Workbench
