// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Correction.h"

#include "io/Interruption.h"
#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <variant>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// Corrects frame after frame; the order of arrival is kept.
class Corrector {
public:
    Corrector(const Placement& correction, double middle)
        : lag_(correction[indexOf(MountingParameter::Lag)]),
          drift_(correction[indexOf(MountingParameter::Drift)]),
          azimuthFactor_(1.0 + correction[indexOf(MountingParameter::AzimuthScale)]),
          middle_(middle) {}

    SensorFrame operator()(SensorFrame frame) {
        if (frame.source == Veskar::Radar) {
            frame.time -= lag_ + drift_ * (frame.time - middle_);
            for (Report& report : frame.tracks) {
                if (auto* heard = std::get_if<RadarReport>(&report)) {
                    heard->azimuth *= azimuthFactor_;
                }
            }
        }
        latest_ = std::max({latest_, frame.received, frame.time});
        frame.received = latest_;
        return frame;
    }
    double latest() const { return latest_; }

private:
    double lag_;
    double drift_;
    double azimuthFactor_;
    double middle_;
    double latest_ = -std::numeric_limits<double>::infinity();
};

}  // namespace

RecordingHeader corrected(RecordingHeader header, const Placement& correction) {
    static_cast<Installation&>(header) = placed(header, correction);
    return header;
}

void applyCorrection(const std::string& recording, const Placement& correction, double middle,
                     const std::function<void(const std::string&)>& write) {
    RecordingReader reader(recording);
    write(toJsonLine(corrected(reader.header(), correction)));
    Corrector correct(correction, middle);
    while (const std::optional<RecordingLine> line = reader.next()) {
        throwIfInterrupted();
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            write(toJsonLine(correct(*frame)));
        } else {
            write(toJsonLine(std::get<TruthFrame>(*line)));
        }
    }
    if (const std::optional<double> end = reader.end()) {
        write(fmt::format("{{\"end\":{:.6f}}}\n", std::max(*end, correct.latest())));
    }
}

}  // namespace Workbench
