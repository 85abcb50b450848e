// SPDX-License-Identifier: Apache-2.0
// The reports of one sensor, for drawing.
#pragma once

#include <veskar-host/HostAdapter.h>

#include "HostLibrary.h"
#include "report/TrackTable.h"
#include "report/Words.h"

namespace Workbench {

/// The tracks of a sensor over time, converted like system tracks with this sensor alone, so that
/// sensors and fusion can be drawn in one view.
class SensorTable {
public:
    /// @param hostAdapter converts reports; must outlive this
    /// @param vocabulary receives the classes; must outlive this
    SensorTable(const HostAdapter& hostAdapter, Words& vocabulary);

    /// @param frame a frame of the sensor
    void add(const SensorFrame& frame);
    /// @param start time 0 of the report, s
    /// @return {"time": column, "table": see TrackTable}
    Json json(double start) const;

private:
    const HostAdapter& adapter_;
    Words& words_;
    std::vector<double> times_;
    TrackTable table_;
};

}  // namespace Workbench
