// SPDX-License-Identifier: Apache-2.0
// The results of a fusion run, for drawing.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "HostLibrary.h"
#include "report/TrackTable.h"
#include "report/Words.h"

namespace Workbench {

/// The system tracks of a run over time, with their sensor tracks.
class RunTable {
public:
    /// @param vocabulary receives classes and colours; must outlive this
    explicit RunTable(Words& vocabulary);

    /// @param frame the system tracks after a frame
    void add(const FusedFrame& frame);
    /// @param start time 0 of the report, s
    /// @return {"time": column, "received": column, "source": column (0 video, 1 radar), "tracks":
    ///         see TrackTable, "sensors": see TrackTable, with a track for each pair of system
    ///         track and sensor track}
    Json json(double start) const;

private:
    Words& words_;
    std::vector<double> times_;
    std::vector<double> received_;
    Column sources_{1.0};
    TrackTable tracks_;
    TrackTable sensors_;
};

/// The number of a source in the page.
/// @param source VideoObject or Radar
/// @return 0 for video, 1 for radar
constexpr std::int32_t sourceNumber(Veskar::Source source) {
    return source == Veskar::Radar ? 1 : 0;
}

}  // namespace Workbench
