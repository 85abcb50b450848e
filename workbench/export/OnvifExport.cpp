// SPDX-License-Identifier: Apache-2.0
#include "export/OnvifExport.h"

#include <veskar-host/InputError.h>

#include "export/OnvifFormats.h"

#include <chrono>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

template <OnvifExport::Form form>
std::unique_ptr<Exporter> openOnvif(const std::string& output, const RecordingHeader& header) {
    return std::make_unique<OnvifExport>(output, header, form);
}

}  // namespace

OnvifExport::OnvifExport(const std::string& path, const RecordingHeader& header, Form form)
    : output_(path),
      header_(header),
      form_(form),
      video_(header, sourceName(Veskar::VideoObject)),
      radar_(header, sourceName(Veskar::Radar)) {}

bool OnvifExport::takeReports(const SensorFrame& frame) {
    write((frame.source == Veskar::Radar ? radar_ : video_).describe(frame, utcOf(frame.time)));
    return true;
}

void OnvifExport::add(const std::string& layer, const FusedFrame& frame) {
    write(layers_.try_emplace(layer, header_, layer)
              .first->second.describe(frame, utcOf(frame.time)));
}

void OnvifExport::finish() {
    output_.commit();
}

Veskar::Live::UtcTime OnvifExport::utcOf(double time) const {
    const double utc = header_.epoch.value_or(0.0) + time;
    constexpr double latest = 7.2e9;  // what readers take for a time: up to the year 2200
    if (!(utc >= 0.0 && utc < latest)) {
        throw InputError(fmt::format("the time {} s is no UTC after 1970", utc));
    }
    return std::chrono::microseconds(std::llround(utc * 1e6));
}

void OnvifExport::write(Veskar::Live::SceneFrame frame) {
    Veskar::Live::Scene scene;
    scene.push_back(std::move(frame));
    output_.write(form_(scene));
    output_.write("\n");
}

std::vector<ExportFormat> onvifFormats() {
    return {{"onvif-xml", false, openOnvif<Veskar::Live::toXml>},
            {"onvif-json", false, openOnvif<Veskar::Live::toJson>}};
}

}  // namespace Workbench
