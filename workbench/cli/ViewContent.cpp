// SPDX-License-Identifier: Apache-2.0
#include "cli/ViewContent.h"

#include <veskar-host/HostAdapter.h>
#include <veskar-host/InputError.h>
#include <veskar/Config.h>
#include <veskar/Version.h>

#include "HostLibrary.h"
#include "host/pipeline/ReplayOptions.h"
#include "replay/Explainer.h"
#include "report/Page.h"
#include "report/Report.h"
#include "report/SceneOutline.h"

#include <chrono>
#include <memory>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

Json sensorsOf(const Veskar::Live::RunConfiguration& run) {
    Json sensors = Json::array();
    for (const Veskar::Live::SensorSettings& sensor : run.sensors) {
        sensors.push_back({{"name", sensor.name}, {"source", sourceName(sensor.source)}});
    }
    return sensors;
}

}  // namespace

Veskar::Live::ViewContent viewContentOf(const Veskar::Live::RunConfiguration& run) {
    if (!reportPageMissing.empty()) {
        throw InputError("view", std::string(reportPageMissing));
    }
    const Installation& installation = run.installation;
    const HostAdapter adapter(installation, Veskar::Config::defaults());
    const auto start = std::chrono::system_clock::now().time_since_epoch();
    const Json hello{{"program", Veskar::veskarVersion()},
                     {"start", std::to_string(start.count())},
                     {"scene", sceneOutline(adapter.projection(), installation)},
                     {"sensors", sensorsOf(run)}};
    return {std::string(livePage), embeddable(hello), [](Veskar::Live::ViewContent::Lines lines) {
                return std::make_unique<Explainer>(std::move(lines), replayUptime);
            }};
}

}  // namespace Workbench
