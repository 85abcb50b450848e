// SPDX-License-Identifier: Apache-2.0
#include "report/TruthTable.h"

#include "report/Column.h"
#include "report/Resolution.h"

#include <nlohmann/json.hpp>

namespace Workbench {

Json truthTable(const std::vector<TruthFrame>& frames, const Projection& camera, Words& words,
                double start) {
    TrackTable table({"id"}, {{"x", metres},
                              {"y", metres},
                              {"vx", metresPerSecond},
                              {"vy", metresPerSecond},
                              {"u", image},
                              {"v", image},
                              {"video", 1.0},
                              {"radar", 1.0},
                              {"class", 1.0}});
    std::vector<double> times;
    for (const TruthFrame& frame : frames) {
        times.push_back(frame.time);
        table.beginFrame();
        for (const TruthObject& object : frame.objects) {
            const Eigen::Vector3d place(object.position[0], object.position[1], 0.0);
            const Eigen::Vector2d uv =
                camera.sees(place) ? camera.position(place) : Eigen::Vector2d(noValue, noValue);
            table.add({object.id}, {object.position[0], object.position[1], object.velocity[0],
                                    object.velocity[1], uv[0], uv[1], object.inVideo ? 1.0 : 0.0,
                                    object.inRadar ? 1.0 : 0.0, words.numberOf(object.className)});
        }
    }
    return {{"time", timeColumn(times, start)}, {"table", table.json()}};
}

}  // namespace Workbench
