// SPDX-License-Identifier: Apache-2.0
// Every setting of the fusion, loaded from one JSON document.
#pragma once

#include <veskar/ConfigFault.h>
#include <veskar/Export.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Veskar {

class JsonNode;

/// The configuration of the whole library; docs/configuration.md explains each key.
///
/// A plain value: objects built from it keep a copy. Every record is zero until its keys are read,
/// but for the constants of the rules, which are off: a Config{} made by hand lets nothing through
/// the gates and confirms everything. Start from
/// defaults() and change what should be different.
///
/// Each section's parse logs a failure at error priority as "Failed to parse fusion config: " with
/// the reason and throws a plain std::exception; the enclosing sections do the same, so one bad
/// key gives one precise line and one general line per enclosing section. Reals must be written
/// with a fraction or exponent. findFaults tells keys, lines and reasons, also of what a parse
/// passes over in silence. The static functions may run concurrently.
struct VESKAR_EXPORT Config {
    /// Measurement noise of the video sensor, for the host that turns detections into tracks
    /// ("video" in "veskarInputs").
    struct VESKAR_EXPORT VideoInput {
        double uvCorrelation = 0.0;          ///< correlation of u and v
        double uvVelocityStd = 0.0;          ///< standard deviation of u and v rate, 1/s
        double minimumPseudoRangeStd = 0.0;  ///< least standard deviation of the pseudo range, m
        double maximumPseudoRangeStd = 0.0;  ///< largest standard deviation of the pseudo range, m
        double pseudoRangeDotStd = 0.0;      ///< standard deviation of the pseudo-range rate, m/s
        double minimumAngle = 0.0;           ///< least angle below the horizon, degrees
        double uvPositionStd = 0.0;          ///< standard deviation of u and v

        /// @param node the section
        /// @return the record
        /// @throw std::exception when a key is missing or of the wrong type
        static VideoInput parse(const JsonNode& node);
    };

    /// What the sensors deliver ("veskarInputs").
    struct VESKAR_EXPORT FusionInputs {
        VideoInput video;  ///< key "video"

        /// @param node the section
        /// @return the record
        /// @throw std::exception when a key is missing or of the wrong type
        static FusionInputs parse(const JsonNode& node);
    };

    /// Odds gains, normally below 1, that lower the probability of a system track which holds a
    /// coasting track of the frame's sensor and which the frame has not handled ("gainNegative").
    struct VESKAR_EXPORT GainNegative {
        double radar = 0.0;  ///< in a radar frame
        double video = 0.0;  ///< in a video frame

        /// @param node the section
        /// @return the record
        /// @throw std::exception when a key is missing or of the wrong type
        static GainNegative parse(const JsonNode& node);
    };

    /// Gating, association, track management and what depends on them ("veskarModule").
    struct VESKAR_EXPORT ModuleConfig {
        GainNegative gainNegative;                   ///< required
        bool splitGating = false;                    ///< gate position and velocity apart; required
        double gatingDistance = 0.0;                 ///< combined gate (exclusive); required
        double positionGatingDistance = 0.0;         ///< position gate (exclusive); required
        double velocityGatingSimilarity = 0.0;       ///< least cosine (exclusive); required
        double velocityMinGatingLimit = 0.0;         ///< speed sum that makes it count; required
        double stationaryBlockingMinSpeed = 0.0;     ///< m/s; default 10 / 3.6
        double stationaryBlockingMaxUVSpeed = 0.0;   ///< 1/s; default 0.03
        double stationaryBlockingMinVideoAge = 0.0;  ///< s; default 3.0
        double trackKillTime = 0.0;  ///< s; required, but the coasting limit is fixed at 0.5
        double systemTrackConfirmationLimitUpper = 0.0;  ///< for one sensor alone; required
        double systemTrackConfirmationLimitLower = 0.0;  ///< for radar and video; required
        bool allowRadarToMultiple = false;   ///< share a radar track between objects; required
        bool useJVA = false;                 ///< optimal instead of greedy assignment; required
        bool removeClassMismatches = false;  ///< classes may part radar and video; default false
        int trackedOdMotionAnalyzerMaxHistoryLength = 0;        ///< positions; default 20
        int trackedOdMotionAnalyzerMinHistoryLength = 0;        ///< positions; default 3
        double trackedOdMotionAnalyzerDistanceThreshold = 0.0;  ///< image plane; default 0.2
        double autocalibrationAgeLimit = 0.0;                   ///< s; default 1.0
        double autocalibrationVideoCoastingLimit = 0.0;         ///< s; default 0.1
        double autocalibrationEdgeLimit = 0.0;                  ///< image plane; default 0.99
        double autocalibrationVideoNearLimit = 0.0;             ///< image plane; default 0.2
        /// {min, max} of width over height by class; only "human" is filled, default {0.3, 0.65}
        /// as a whole when either of its two keys is missing or not a real.
        std::map<std::string, std::pair<double, double>> autocalibrationAspectLimits;

        /// @param node the section
        /// @return the record; optional keys that are missing or of the wrong type have defaults
        /// @throw std::exception when a required key is missing or of the wrong type
        static ModuleConfig parse(const JsonNode& node);
    };

    /// Detection priority ("veskarDetectionPriority"); every key is required.
    struct VESKAR_EXPORT PriorityConfig {
        double vuraWidthFractionLimit = 0.0;   ///< fraction of the image; no rule reads it
        double vuraHeightFractionLimit = 0.0;  ///< least box height, fraction of the image
        double vodWidthFractionLimit = 0.0;    ///< fraction of the image; no rule reads it
        double vodHeightFractionLimit = 0.0;   ///< least box height, fraction of the image
        double longlivedLimit = 0.0;           ///< age of a long-lived track, s
        double travelledDistanceLimit = 0.0;   ///< image plane
        double radarFarLimitHuman = 0.0;       ///< m
        double radarFarLimitVehicle = 0.0;     ///< m
        int nVideoFramesMissedLimitLow = 0;    ///< evaluations
        int nVideoFramesMissedLimitHigh = 0;   ///< evaluations
        bool autoAnnotationEnabled = false;    ///< send annotations

        /// @param node the section
        /// @return the record
        /// @throw std::exception when a key is missing or of the wrong type
        static PriorityConfig parse(const JsonNode& node);
    };

    /// Rules that go beyond the basic fusion ("veskarRules"). The section and each of its keys are
    /// optional; what is missing, or of the wrong type, has the value it has here, and then the
    /// rule does nothing. docs/configuration.md says what each rule is for.
    struct VESKAR_EXPORT Rules {
        /// When a radar report does not fit a system track that both sensors support, video leaves
        /// and radar stays.
        bool radarKeepsSystemTrack = false;
        /// A report leaves a system track that both sensors support when its position is this far
        /// (inclusive) from the other sensor's track, as a fraction of positionGatingDistance; 0:
        /// no limit.
        double pairGate = 0.0;
        /// Remember how well pairs of radar and video tracks agree, and how many others are as
        /// near: a report whose pair disagrees leaves, and system tracks merge by their memory.
        bool pairMemory = false;
        double pairMemoryTime = 1.0;        ///< time constant of the memory, s
        double pairMemoryFreshness = 0.15;  ///< longest coasting time that counts, s (inclusive)
        /// Mahalanobis distance from which on (inclusive) pairs are equally far.
        double pairMemoryFar = 4.0;
        /// Mahalanobis distance below which another track is a rival.
        double pairMemoryNear = 2.0;
        /// Mean squared Mahalanobis distance above which a pair disagrees, in a crowd; a pair
        /// begins with it.
        double pairMemoryLimit = 1.5;
        double pairMemoryCrowd = 0.5;  ///< mean number of rivals above which it is a crowd
        /// A system track takes a new sensor track while its own one coasts, when the sensor has
        /// never updated both in one of its last 32 frames. Needs freshReportsOnly.
        bool takeOver = false;
        /// Reports that coast start no system track and are assigned to none.
        bool freshReportsOnly = false;
        double coastingLimit = 0.05;  ///< s; from it on (inclusive) the two rules above act
        /// Of two system tracks that started at the same time the one with the smaller id counts as
        /// the older one, and the one with radar survives a merge unless only the other is
        /// confirmed.
        bool orderedMerging = false;
        /// A system track without radar is not confirmed before the standard deviation of its range
        /// is below this, m, while radar frames arrive; 0: no limit.
        double videoRangeStd = 0.0;
        double radarSilence = 1.0;  ///< s since the last radar frame from which on radar is silent

        /// @param node the section
        /// @return the record
        static Rules parse(const JsonNode& node);
    };

    FusionInputs inputs;               ///< key "veskarInputs"
    ModuleConfig module;               ///< key "veskarModule"
    PriorityConfig detectionPriority;  ///< key "veskarDetectionPriority"
    Rules rules;                       ///< key "veskarRules"

    /// @return the shipped configuration, config/fusion.json
    static Config defaults();
    /// @return JSON text of the shipped configuration, with the sections that others read
    ///         ("veskarHost")
    static std::string defaultsText();

    /// Lists everything that is wrong with a document, and logs nothing.
    ///
    /// Numbers are not checked against limits.
    ///
    /// @param json the JSON text
    /// @return the faults in the order of their lines; parse_json_string throws exactly when one of
    ///         them is Refused
    static std::vector<ConfigFault> findFaults(const std::string& json);

    /// Writes the configuration as it is, every key, optional ones too; the rules only when one of
    /// them is not as it is without the section.
    ///
    /// Reals are written with a fraction or exponent and the fewest digits that give them back
    /// exactly, in the classic locale. What is not finite becomes null, which parse refuses. Of
    /// autocalibrationAspectLimits only the entry "human" can be written.
    ///
    /// @return JSON text for parse_json_string, indented, without a line end behind it
    std::string toJson() const;

    /// @param node root of the document
    /// @return the configuration
    /// @throw std::exception when a section is missing or wrong
    static Config parse(const JsonNode& node);
    /// @param path a JSON file
    /// @return the configuration
    /// @throw std::runtime_error "Failed to load json from file: " with path and reason
    /// @throw std::exception when a section is missing or wrong
    static Config parse(const std::string& path);
    /// @param json the JSON text
    /// @return the configuration
    /// @throw std::runtime_error "Failed to load json from string: " with text and reason
    /// @throw std::exception when a section is missing or wrong
    static Config parse_json_string(const std::string& json);
};

}  // namespace Veskar
