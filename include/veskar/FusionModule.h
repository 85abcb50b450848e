// SPDX-License-Identifier: Apache-2.0
// The entry point: takes sensor frames, keeps the list of system tracks.
#pragma once

#include <veskar/AutocalibrationHandler.h>
#include <veskar/Config.h>
#include <veskar/Export.h>
#include <veskar/FusionObserver.h>
#include <veskar/ObjectIdGenerator.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>
#include <veskar/TrackAssociator.h>
#include <veskar/TrackedOdMotionAnalyzer.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// Fuses radar and video tracks into system tracks.
///
/// A host builds one module per process, calls cycle with every frame of either sensor, from one
/// thread at a time, and reads `systemTracks` between the calls. The module takes no lock and
/// starts no thread. The operations behind cycle are public for hosts that order frames themselves;
/// they make no checks.
class VESKAR_EXPORT FusionModule {
public:
    /// A monotonic clock on whose time base the frames are stamped.
    using SteadyClock = std::function<std::chrono::nanoseconds()>;

    /// A module on std::chrono::steady_clock.
    /// @param config copied
    explicit FusionModule(const Config& config);
    /// A module on another clock, for replays and tests.
    /// @param config copied
    /// @param steadyClock asked once per call of cycle
    FusionModule(const Config& config, SteadyClock steadyClock);
    virtual ~FusionModule();
    FusionModule(const FusionModule&) = delete;
    FusionModule& operator=(const FusionModule&) = delete;

    /// Takes one frame of a sensor.
    ///
    /// A VideoObject frame is fused at once. Radar frames wait in arrival order until video time
    /// has come within 0.1 s, or until they are more than 1.5 s old on the steady clock; they are
    /// looked at when a radar frame arrives. One that must wait holds up those behind it, so a
    /// stamp from the far future stops radar until video gets there. At most 1000 wait; beyond that
    /// the oldest leaves unfused. Frames of other sources are ignored.
    ///
    /// What would damage the fusion permanently is left out, as if the sensor had not reported it:
    /// - a frame with a time stamp that is not finite;
    /// - a track with a state, covariance, time, coasting time or probability that is not finite;
    /// - a track whose time is more than 10 s from the frame's, whose coasting time or probability
    ///   is negative, or whose covariance is not symmetric and positive definite as far as doubles
    ///   can tell: variances from 1e-30 to 1e30, and with these scaled to 1, symmetric to 1e-9 and
    ///   with Cholesky pivots above 1e-12;
    /// - a frame stamped more than 3600 s from the last one that was accepted. It is held back
    ///   until the next frame of any source. When that lies within 60 s of it, the time base has
    ///   changed: the module clears itself, forgets waiting radar frames and the last video time,
    ///   and takes both. Otherwise the frame held back is dropped.
    ///
    /// All this is logged at error priority, each cause at most once per call; radar frames that
    /// leave unfused at most once a minute. Logged as warnings, each at most once a minute, but
    /// fused all the same: a track with probability 0, a gain that makes the probability of its
    /// system track NaN for good; radar frames that have waited for more than a minute, as they do
    /// when radar is stamped in UNIX time and video in uptime; a frame older than the last one of
    /// its source. The minutes are those of the steady clock.
    ///
    /// @param source the sensor
    /// @param timestamp time of the frame in seconds on the steady clock's time base
    /// @param tracks the sensor's tracks; shared with the module, which predicts them later on
    /// @throw std::runtime_error "One of the JVA costMatrix dimensions was too big (>512)" when a
    ///        side of an optimal assignment has more than 512 tracks. Tracks that are held already
    ///        have been continued, and the frame still confirms, prunes and deletes; it associates
    ///        and starts none and offers no calibration samples. It is not tried again.
    void cycle(Source source, double timestamp, const std::vector<std::shared_ptr<Track>>& tracks);

    /// @param timestamp of a frame, seconds
    /// @return whether cycle would take it for one from another time base, and hold it back unless
    ///         the frame that is held back already agrees with it
    bool isFarInTime(double timestamp) const;

    /// For hosts that keep radar frames themselves while those would have to wait.
    ///
    /// @param timestamp of a radar frame, seconds
    /// @return whether cycle would let it wait for video time, unless it is old enough for that to
    ///         end; one that is far in time waits for another frame, not for video
    bool waitsForVideo(double timestamp) const;

    /// Fuses one frame at once: predicts, updates, starts system tracks, manages them and offers
    /// calibration samples.
    ///
    /// @param source the sensor
    /// @param timestamp time of the frame, seconds
    /// @param tracks the sensor's tracks
    /// @throw std::runtime_error as cycle
    void cycleFrame(Source source, double timestamp,
                    const std::vector<std::shared_ptr<Track>>& tracks);

    /// Moves all system tracks to a time, and the sensor tracks of the last radar and video frames
    /// forward to it.
    /// @param timestamp seconds
    void predictTracks(double timestamp);

    /// Brings a frame into the system tracks: continuation of the sensor tracks they hold,
    /// association of the others, and a probability step for those that neither touched.
    ///
    /// @param source the sensor
    /// @param tracks the sensor's tracks
    /// @throw std::runtime_error as cycle
    void update(Source source, const std::vector<std::shared_ptr<Track>>& tracks);

    /// Starts a system track from a sensor track that no system track holds.
    /// @param track the sensor track; must not be null
    void initialize(std::shared_ptr<Track> track);

    /// Confirms system tracks by their probability, prunes coasting sensor tracks and deletes
    /// system tracks that are empty or duplicate a shared radar track.
    void management();

    /// Folds the first video-object track of another system track, or its first radar track, into
    /// the target.
    ///
    /// @param target the survivor
    /// @param other the system track to fold in; must hold a video-object or radar track
    void merge(SystemTrack& target, SystemTrack& other);

    /// Sets an observer. Without one, or with one that wants no decisions, each decision costs the
    /// comparison of a pointer; otherwise pairs are also compared that association rejects without
    /// a distance.
    ///
    /// @param observer told from the next frame on; stays the caller's, and must outlive the module
    ///                or be replaced before it ends; null: nobody
    void setObserver(FusionObserver* observer);

    /// Forgets all system tracks, the last sensor tracks and what the rules remember of the
    /// sensors. Ids go on, waiting radar frames stay. An observer is told of no deletions.
    void clear();

    /// Records the image position of a tracked video detection.
    ///
    /// @param id id of the tracked detection
    /// @param u first image coordinate
    /// @param v second image coordinate
    /// @return whether it has moved, see TrackedOdMotionAnalyzer
    bool trackedOdHasMotion(int id, double u, double v);

    /// Offers calibration samples after a radar frame; does nothing for other sources.
    /// @param source the sensor of the frame
    /// @param timestamp time of the frame, seconds
    void handleAutocalibration(const Source& source, double timestamp);

private:
    /// A radar frame that waits for video time.
    struct CycleFrame {
        double timestamp;                            ///< as the host stamped it, seconds
        std::vector<std::shared_ptr<Track>> tracks;  ///< shared with the host
        double arrival;                              ///< on the steady clock, seconds
    };
    struct Arrivals;
    struct Workspace;

    void admit(Source source, double timestamp, const std::vector<std::shared_ptr<Track>>& tracks,
               double now);
    void deliver(Source source, double timestamp, const std::vector<std::shared_ptr<Track>>& tracks,
                 double now);
    void drainRadarQueue(double now);
    void fuseOldestRadarFrame();
    void watchRadarQueue(double now);
    void observeSensor(Source source, double timestamp,
                       const std::vector<std::shared_ptr<Track>>& tracks);
    void continueTracks(Source source, const std::vector<std::shared_ptr<Track>>& tracks);
    void continueSystemTrack(SystemTrack& systemTrack, Source source);
    FusionObserver::Refusal judgeReport(const SystemTrack& systemTrack, const Track& report,
                                        Source source, bool isInsideGate);
    void release(SystemTrack& systemTrack, Source source, int id,
                 FusionObserver::PruningReason reason);
    void releaseOthers(SystemTrack& systemTrack, Source source, std::optional<int> kept,
                       FusionObserver::PruningReason reason);
    void mergeSystemTracks();
    void associateTracks(Source source, const std::vector<std::shared_ptr<Track>>& tracks);
    void stepUnmarked(Source source);
    void startSystemTracks(const std::vector<std::shared_ptr<Track>>& tracks);
    void startSystemTrack(std::shared_ptr<Track> track);
    bool waitsForRadar(const SystemTrack& systemTrack) const;
    void eraseRadarCopies();

    Config config_;
    TrackAssociator associator_;

public:
    /// All live system tracks, oldest first. Read it between calls; a track that is kept after it
    /// has left the list takes no part in fusion any more.
    std::vector<std::shared_ptr<SystemTrack>> systemTracks;

private:
    std::map<Source, std::vector<std::shared_ptr<Track>>> lastSensorTracks_;
    std::unordered_set<int> excludedTrackIds_;
    AutocalibrationHandler autocalibrationHandler_;
    TrackedOdMotionAnalyzer motionAnalyzer_;
    std::shared_ptr<ObjectIdGenerator> idGenerator_;
    std::deque<CycleFrame> radarFrameQueue_;
    double radarMaxWait_ = 1.5;
    double lastVideoTimestamp_ = 0.0;
    SteadyClock clock_;
    std::unique_ptr<Arrivals> arrivals_;
    std::unique_ptr<Workspace> workspace_;
    FusionObserver* frameObserver_ = nullptr;  ///< told of frames
    FusionObserver* observer_ = nullptr;       ///< told of decisions: the same, if it wants them
};

}  // namespace Veskar
