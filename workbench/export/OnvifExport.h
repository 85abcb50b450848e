// SPDX-License-Identifier: Apache-2.0
// Exports scene descriptions of ONVIF.
#pragma once

#include "export/Formats.h"
#include "io/OutputFile.h"
#include "live/onvif/FusedScene.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SensorScene.h"

#include <map>
#include <string>

namespace Workbench {

/// A document per frame and line, as devices send them one after the other. Each layer is an
/// analytics module that bears its name. The frames of a sensor are described as the device itself
/// would, those of the truth and of runs as `veskar run` does. Times are UTC; those of a recording
/// without an epoch count from 1970.
class OnvifExport : public Exporter {
public:
    /// Writes a description as text.
    using Form = std::string (*)(const Veskar::Live::Scene& scene);

    /// @param path the output, or "-"
    /// @param header of the recording; must outlive this
    /// @param form XML or JSON
    OnvifExport(const std::string& path, const RecordingHeader& header, Form form);

    bool takeReports(const SensorFrame& frame) override;
    /// @throw InputError also for a time before 1970
    void add(const std::string& layer, const FusedFrame& frame) override;
    void finish() override;

private:
    Veskar::Live::UtcTime utcOf(double time) const;
    void write(Veskar::Live::SceneFrame frame);

    OutputFile output_;
    const RecordingHeader& header_;
    Form form_;
    Veskar::Live::SensorScene video_;
    Veskar::Live::SensorScene radar_;
    std::map<std::string, Veskar::Live::FusedScene> layers_;
};

}  // namespace Workbench
