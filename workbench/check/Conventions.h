// SPDX-License-Identifier: Apache-2.0
// Detects deviations of a recording from the conventions of the format.
#pragma once

#include "check/Agreement.h"
#include "check/Finding.h"
#include "check/RadarMotion.h"
#include "recording/RefusedFrame.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Workbench {

/// A convention of the format that the recording violates.
struct Convention {
    std::string name;        ///< identifier for scripts; docs/judgement.md lists them
    bool misplaces = false;  ///< whether it moves objects, so that the mounting cannot be judged
    Finding finding;         ///< observation and remedy
};

/// Analyses a recording in bounded memory.
///
/// Each other reading of the numbers is a hypothesis. It is accepted when it explains the recording
/// much better than the stated convention does. The evidence is the agreement of radar and video
/// positions (Agreement), the agreement of radar velocities with the radar's displacements
/// (RadarMotion), and the ranges of the values.
class Conventions {
public:
    /// @param header the installation as stated
    explicit Conventions(const RecordingHeader& header);

    /// @param frame the next frame
    void add(const SensorFrame& frame);
    /// @param refused a frame that the reader rejected, but could parse
    void add(const RefusedFrame& refused);

    /// @return the violated conventions; empty when the recording follows the format
    std::vector<Convention> found() const;
    /// @return the agreement of radar and video positions
    const Agreement& agreement() const { return places_; }

private:
    struct Span {
        double first = 1e300;
        double last = -1e300;
        void add(double value);
        bool isEmpty() const { return first > last; }
    };
    struct BoxRanges {
        std::uint64_t count = 0;
        std::uint64_t inUnit = 0;      ///< all sides within 0..1, or nearly
        std::uint64_t farOutside = 0;  ///< a side beyond 2
        std::uint64_t upsideDown = 0;  ///< top below bottom
        Span u;
        Span v;
    };

    void addTime(const SensorFrame& frame);
    void addRanges(const SensorFrame& frame);
    bool isPossible(BoxForm form) const;
    bool isPossible(AzimuthForm form) const;
    bool isPossible(DirectionForm form) const;
    Reading bestReading() const;
    bool explains(double share) const;
    std::string gain(double share) const;
    void judgeTime(std::vector<Convention>& list) const;
    bool judgeHeight(const Reading& best, std::vector<Convention>& list) const;
    void judgeBoxes(const Reading& reading, std::vector<Convention>& list) const;
    void judgeAngles(const Reading& reading, std::vector<Convention>& list) const;
    void judgeAzimuth(const Reading& reading, std::vector<Convention>& list) const;
    void judgeDirection(const Reading& reading, std::vector<Convention>& list) const;
    void judgeSpeed(AzimuthForm azimuth, std::vector<Convention>& list) const;

    Mounting camera_;
    bool canBeRadians_;  ///< the angles of the camera
    Agreement places_;
    RadarMotion motion_;
    std::array<Span, 2> times_;  ///< video, radar
    BoxRanges boxes_;
    std::uint64_t azimuths_ = 0;
    double largestAzimuth_ = 0.0;
    double largestDirection_ = 0.0;
};

}  // namespace Workbench
