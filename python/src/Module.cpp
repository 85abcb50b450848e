// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>
#include <veskar/Version.h>

#include "Bindings.h"

PYBIND11_MODULE(_veskar, module) {
    // Simulated or replayed data must never calibrate a device.
    Veskar::setCalledFromHostApplication(false);
    module.attr("__version__") = Veskar::veskarVersion();
    for (const auto bind :
         {Bindings::bindErrors, Bindings::bindVocabulary, Bindings::bindConfig,
          Bindings::bindCamera, Bindings::bindTrack, Bindings::bindSystemTrack,
          Bindings::bindAssociation, Bindings::bindObserver, Bindings::bindFusion,
          Bindings::bindHostParameters, Bindings::bindInstallation, Bindings::bindReports,
          Bindings::bindGeometry, Bindings::bindPipeline, Bindings::bindRecordings,
          Bindings::bindWorkbench, Bindings::bindCalibration, Bindings::bindMetrics}) {
        bind(module);
    }
}
