// SPDX-License-Identifier: Apache-2.0
// The package without `calibrate`.
#include "Bindings.h"

namespace Bindings {

void bindCalibration(py::module_& module) {
    module.def("_calibrate", [](const py::args&) {
        PyErr_SetString(PyExc_NotImplementedError, VESKAR_CALIBRATE_MISSING);
        throw py::error_already_set();
    });
}

}  // namespace Bindings
