// SPDX-License-Identifier: Apache-2.0
// The function that stands for the calibration in a package without it.
#include "Bindings.h"

PYBIND11_MODULE(_without_calibration, module) {
    Bindings::bindCalibration(module);
}
