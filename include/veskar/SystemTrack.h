// SPDX-License-Identifier: Apache-2.0
// The fused track of one object and the sensor tracks that feed it.
#pragma once

#include <veskar/Export.h>
#include <veskar/Track.h>

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Veskar {

/// The fused track of one real object: its own estimate (inherited) and the sensor tracks behind
/// it.
///
/// The estimate is track-to-track fusion in information form under the assumption of independent
/// sensor estimates: with Y = P^-1 and y = P^-1 x, every sensor track adds its (Y, y), a new report
/// first takes the previous one out again, and so does a sensor track that leaves (Chong, Mori,
/// Chang: "Distributed multitarget multisensor tracking", in Multitarget-Multisensor Tracking,
/// 1990; Bar-Shalom, Willett, Tian: Tracking and Data Fusion, 2011).
///
/// That bookkeeping holds only while `sensorTracks` changes through updateState and the pruning
/// operations alone. "First" sensor track of a source means the one with the smallest id. A null
/// sensor track, handed in or held, is a programming error and stops the process. Not thread-safe:
/// FusionModule works on it from the thread that calls FusionModule::cycle.
class VESKAR_EXPORT SystemTrack : public Track {
public:
    /// The tracks of one source, by sensor-track id.
    using SensorTracks = std::map<int, std::shared_ptr<Track>>;

    /// Starts a system track from one sensor track: takes over estimate, times, box, start position
    /// and class. Its probability starts at 0.5.
    ///
    /// @param track the sensor track; must not be null
    /// @param systemId id of the system track
    SystemTrack(std::shared_ptr<Track> track, int systemId);

    ~SystemTrack() override;

    /// Copies every member; the sensor tracks are shared with the original.
    SystemTrack(const SystemTrack&) = default;
    /// Copies every member; the sensor tracks are shared with the original.
    /// @return this track
    SystemTrack& operator=(const SystemTrack&) = default;

    /// Moves the fused estimate and the radar and video-object tracks behind it to a time, and lets
    /// every sensor track coast by the interval. Tracks of VideoVura coast but do not move.
    ///
    /// @param t the new time, seconds; may lie before `time`
    void predict(double t) override;

    /// @return age of the first video-object track in seconds; -1 without one
    double getAge() const override;
    /// @return probability of the class; from the first radar track, times 100, while no
    ///         video-object track has named a class
    double getClassProbability() const override;
    /// @return speed of the first radar track, m/s; empty without one
    std::optional<double> getSpeed() const override;
    /// @return direction of the first radar track; empty without one
    std::optional<Eigen::Vector2d> getDirection() const override;
    /// @return location of the first radar track; empty without one
    std::optional<SphericalCoordinate> getLocation() const override;
    /// @return geographic position of the first radar track; empty without one
    std::optional<::Dbus::GeoLocation::Position> getGeoLocation() const override;
    /// @return class; from the first radar track while no video-object track has named one
    std::string getClassName() const override;
    /// @return colour; from the first radar track while no video-object track has named one
    std::string getColorName() const override;
    /// @return probability of the colour, from the same track as the colour
    double getColorProbability() const override;
    /// @return colour of upper clothing, chosen like the colour
    std::string getUpperClothingColorName() const override;
    /// @return probability of that colour, from the same track
    double getUpperClothingColorProbability() const override;
    /// @return colour of lower clothing, chosen like the colour
    std::string getLowerClothingColorName() const override;
    /// @return probability of that colour, from the same track
    double getLowerClothingColorProbability() const override;

    /// @param s a source
    /// @return whether tracks of @p s were ever kept here; their map may be empty now
    bool hasSource(const Source& s) const;
    /// @param s a source
    /// @return whether at least one track of @p s feeds this system track
    bool hasTracks(const Source& s) const;
    /// @param s a source
    /// @return the tracks of @p s in ascending id order
    /// @throw std::out_of_range ("map::at") when hasSource(@p s) is false
    const SensorTracks& getSensorTracks(const Source& s) const;

    /// Lets every sensor track of every source coast.
    /// @param dt seconds added to each coasting time
    void setCoastingTimeTracks(double dt);
    /// @param s a source
    /// @return whether some track of @p s has a coasting time above 0
    bool hasCoastingTracks(const Source& s) const;
    /// @param s a source
    /// @param limit seconds
    /// @return whether some track of @p s has a coasting time above (strictly) @p limit
    bool hasCoastingTracksTooLong(const Source& s, double limit) const;

    /// Takes one sensor track out of the estimate and lets go of it; nothing happens when it is not
    /// held. When a video-object track leaves, the box is taken from the first radar track.
    ///
    /// @param s source of the sensor track
    /// @param idx id of the sensor track
    void pruneSensorTracksByIdx(const Source& s, int idx);
    /// Takes out every sensor track of a source that has coasted for 0.5 s or longer.
    /// @param s a source
    void pruneSensorTracksByCoastingTime(const Source& s);
    /// Takes out the radar and then the video-object tracks that have coasted for 0.5 s or longer.
    /// Tracks of VideoVura are never pruned by coasting.
    void prune();

    /// Fuses a report. The system track must already be predicted to the report's time.
    ///
    /// A new sensor track adds its information, Y += Yn and y += yn; one that reports again
    /// replaces what it had contributed, Y += Yn - Yo and y += yn - yo, and inherits the start time
    /// of its first report. The box of a video-object track becomes the system's; that of a radar
    /// track only while there is no video-object track. Singular covariances are not detected and
    /// give a meaningless estimate.
    ///
    /// @param track the report; kept under its source and id; must not be null
    void updateState(std::shared_ptr<Track> track);

    /// Takes a sensor track's contribution out of the estimate, Y -= Yt and y -= yt. Does nothing
    /// while fewer than two video-object and radar tracks together are held: the last support stays
    /// in the estimate.
    ///
    /// @param track a sensor track whose information is part of the estimate
    void applyDefusion(const Track& track);

    /// While the start position lies outside the image, moves it along: to the image border where
    /// the object has come in, with components in the order (v, u) as intersectionWithImageBorder
    /// returns them, or to the current position while it is still outside. Also restarts the age.
    void updateOriginAndStartTime();

    /// @return probability that the object exists: the mean of the last five posteriors; 0.0
    ///         when the history is empty
    double getTrackProbability() const;
    /// Bayes step of the track probability: q' = q / (1/gain + (1 - 1/gain) q).
    ///
    /// @param gain likelihood ratio; above 1 raises, below 1 lowers, 1 keeps; 0 is not guarded
    void updateTrackProbability(double gain);
    /// Sets `isConfident`: true with a radar track, otherwise that of the first video-object track,
    /// otherwise false.
    void updateIsConfident();

    /// Takes the class of a video-object track unless it is "unknown". Other sources are ignored.
    /// @param track the reporting track
    void updateClass(const Track& track);
    /// Takes the colour of a video-object track unless it is "unknown".
    /// @param track the reporting track
    void updateColor(const Track& track);
    /// Takes the upper clothing's colour of a video-object track unless it is "unknown".
    /// @param track the reporting track
    void updateUpperClothingColor(const Track& track);
    /// Takes the lower clothing's colour of a video-object track unless it is "unknown".
    /// @param track the reporting track
    void updateLowerClothingColor(const Track& track);

    bool classVoted;               ///< a video-object track has named a class
    bool colorVoted;               ///< a video-object track has named a colour
    bool upperClothingColorVoted;  ///< a video-object track has named a colour of upper clothing
    bool lowerClothingColorVoted;  ///< a video-object track has named a colour of lower clothing
    double systemStartTime;        ///< when the object started or entered the image, seconds
    std::map<Source, SensorTracks> sensorTracks;  ///< the supporting tracks by source and id
    std::vector<double> trackProbabilityHistory;  ///< last five posteriors, newest first

    /// Annotation reasons that have fired (bit values 1, 2, 4, 8, 16, 32); see DetectionPriority.
    std::array<bool, 6> reasonLatches;
    int framesWithoutVideo;              ///< evaluations without video in good video conditions
    std::string annotationLabel;         ///< label of the last annotation sent
    std::vector<int> annotatedRadarIds;  ///< radar ids that an annotation was sent for

    bool isConfirmed;  ///< confirmed by track management; never cleared
};

}  // namespace Veskar
