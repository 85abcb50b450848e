// SPDX-License-Identifier: Apache-2.0
// Evaluates fused tracks and the tracks of each sensor against the truth of a recording.
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

/// Options of an evaluation.
struct EvaluationOptions {
    double cutoff = 5.0;                               ///< see Scorecard, m
    std::vector<double> bands{0.0, 20.0, 40.0, 80.0};  ///< lower limits of the range bands, m
    std::vector<int> confirmationHits{3, 8, 15};       ///< hits to confirm sensor tracks
    double coastingLimit = 0.5;                        ///< of every tracker, s
    /// Evaluates only where both sensors can see; otherwise the whole scene.
    bool commonFieldOfView = true;
};

/// The metrics of one tracker over one part of the scene.
struct TrackerFigures {
    std::string tracker;  ///< "fusion", "radar 3", "video 15"
    std::vector<Figure> figures;
};

/// The metrics of all trackers over one part of the scene.
struct PartFigures {
    std::string part;  ///< "all", a class, or a range band
    std::vector<TrackerFigures> trackers;
};

/// GOSPA of one tracker at one instant of the truth, over the whole scene.
struct GospaMoment {
    double time = 0.0;  ///< s
    Gospa gospa;        ///< when the truth is incomplete, its false tracks and its distance are
                        ///< meaningless
    std::map<int, int> matches;  ///< track id by object id, as matched by CLEAR MOT
};

/// GOSPA of one tracker over time.
struct GospaSeries {
    std::string tracker;  ///< as in TrackerFigures
    std::vector<GospaMoment> moments;
};

/// Evaluates fused tracks against the truth of a recording, and the sensors' own tracks on the same
/// frames, by the same rules and at the same instants.
///
/// At every instant of the truth, the tracks that have arrived by then are predicted to it with
/// constant velocity. A sensor track counts as confirmed after a number of detections under its id.
class Evaluation {
public:
    /// @param installation the header of the recording
    /// @param config configuration of the fusion; its noise parameters are used to convert the
    ///               sensors' tracks
    /// @param options what to evaluate
    Evaluation(const RecordingHeader& installation, const Veskar::Config& config,
               const EvaluationOptions& options);

    /// @param frame the fused tracks after a frame, in the order of arrival; must be added before
    ///              the first truth line that is later than its arrival
    void add(const FusedFrame& frame);
    /// @param line the lines in the order of the recording
    void add(const RecordingLine& line);

    /// @return metrics of the whole scene, then of the classes, then of the range bands
    std::vector<PartFigures> figures() const;
    /// @return number of evaluated instants
    int instants() const { return judged_; }
    /// @return GOSPA at every evaluated instant, of the fusion and of each sensor
    std::vector<GospaSeries> gospaOverTime() const;

private:
    struct Judged {
        std::string name;
        std::optional<Veskar::Source> source;  ///< none: the fusion
        int hits;                              ///< detections that confirm a sensor track
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
