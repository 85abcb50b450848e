// SPDX-License-Identifier: Apache-2.0
// Evaluates fused tracks and the tracks of each sensor against the truth of a recording.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>

#include "evaluate/EvaluationOptions.h"
#include "evaluate/Picture.h"
#include "evaluate/TrackerJudgement.h"
#include "host/duties/SensorSupervisor.h"
#include "recording/Recording.h"

#include <cstddef>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Workbench {

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
///
/// Some metrics need a second pass over all instants. What it reads is stored in a temporary file
/// when it is much, so that memory does not grow with the duration of the recording, only with the
/// number of objects and tracks that have been near each other.
class Evaluation {
public:
    /// @param installation the header of the recording
    /// @param config configuration of the fusion; its noise parameters are used to convert the
    ///               sensors' tracks
    /// @param options what to evaluate
    Evaluation(const RecordingHeader& installation, const Veskar::Config& config,
               const EvaluationOptions& options);
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    /// @param frame the fused tracks after a frame, in the order of arrival; must be added before
    ///              the first truth line that is later than its arrival
    void add(const FusedFrame& frame);
    /// @param line the lines in the order of the recording
    /// @throw InputError when a temporary file cannot be written
    void add(const RecordingLine& line);

    /// Makes the second pass.
    /// @throw InputError when a temporary file cannot be written or read
    /// @throw Interrupted when a signal has come
    /// @return metrics of the whole scene, then of the classes, then of the range bands
    std::vector<PartFigures> figures();
    /// @return number of evaluated instants
    int instants() const { return judged_; }
    /// @return GOSPA at every evaluated instant, of the fusion and of each sensor, if they are kept
    std::vector<GospaSeries> gospaOverTime();

private:
    struct Tracker {
        std::string name;
        std::optional<Veskar::Source> source;  ///< none: the fusion
        int hits;                              ///< detections that confirm a sensor track
        Picture picture;
        std::unique_ptr<TrackerJudgement> judgement;
    };
    using SensorTracks = std::vector<Picture::Reported>;
    /// The truth at one time and the tracks of every tracker.
    struct Moment {
        TrueMoment truth;
        std::vector<std::vector<JudgedTrack>> tracks;
    };

    void takeSensor(const SensorFrame& frame);
    void predictSlowSensors(double time);
    void show(Veskar::Source source, double time,
              const std::vector<std::shared_ptr<Veskar::Track>>& tracks);
    void judge(const TruthFrame& truth);
    void judgeWaiting();
    void finishJudging();
    void forEachTracker(const std::function<void(std::size_t)>& function);
    std::string bandName(std::size_t band) const;

    EvaluationOptions options_;
    HostAdapter adapter_;
    SensorSupervisor duties_;
    SceneParts parts_;
    std::vector<Tracker> trackers_;
    std::map<std::pair<Veskar::Source, int>, int> hitsOfTrack_;
    std::vector<std::string> classes_;
    std::unordered_map<int, int> truthNumbers_;
    int judged_ = 0;
    std::vector<Moment> waiting_;
    std::vector<Moment> underWay_;
    std::vector<std::future<void>> threads_;  ///< the last member: destroyed first, which waits
};

}  // namespace Workbench
