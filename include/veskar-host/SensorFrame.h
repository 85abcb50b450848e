// SPDX-License-Identifier: Apache-2.0
// The reports of a sensor at one time.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/RadarReport.h>
#include <veskar-host/ReadyEstimate.h>
#include <veskar-host/VideoReport.h>
#include <veskar/Track.h>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Veskar::Host {

/// A track as reported by a sensor or another producer.
using Report = std::variant<VideoReport, RadarReport, ReadyEstimate>;

/// @param report a report of any kind
/// @return the fields that all kinds share
VESKAR_HOST_EXPORT const ReportBase& baseOf(const Report& report);

/// One frame of one sensor.
///
/// Both times are of one time base: std::chrono::steady_clock on a device, that of the recording in
/// a recording.
struct SensorFrame {
    Source source = VideoObject;  ///< VideoObject or Radar
    double time = 0.0;            ///< of the measurement, seconds
    double received = 0.0;        ///< when the host received it, seconds; not less than
                                  ///< that of any frame handed over earlier
    std::vector<Report> tracks;   ///< may be empty
};

/// The name of a source in recordings and fused tracks.
/// @param source a source
/// @return "video", "radar" or "other"
VESKAR_HOST_EXPORT const char* sourceName(Source source);

/// The frame as a line of a recording; docs/recording-format.md describes it.
///
/// Numbers are rounded far below any sensor's resolution (times and image positions to 1e-6, metres
/// to 1e-3 or finer).
///
/// @param frame a frame
/// @return its line, with line end
VESKAR_HOST_EXPORT std::string toJsonLine(const SensorFrame& frame);

/// Reads a line of a recording that holds a sensor frame. For truth lines and for large recordings
/// use `veskar replay`.
///
/// @param text the line, with or without line end
/// @return the frame
/// @throw InputError the fault, as "tracks[3].range: expected a number, found a string"
VESKAR_HOST_EXPORT SensorFrame parseSensorFrame(std::string_view text);

}  // namespace Veskar::Host
