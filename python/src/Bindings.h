// SPDX-License-Identifier: Apache-2.0
// What the sources of the module share.
#pragma once

#include <string>

#include <pybind11/eigen.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

namespace Bindings {

namespace py = pybind11;

/// @param path a str or os.PathLike
/// @return the path
inline std::string pathOf(const py::object& path) {
    return py::module_::import("os").attr("fsdecode")(path).cast<std::string>();
}

// One function per subject, called in this order: a type comes before those that use it.
void bindErrors(py::module_& module);
void bindVocabulary(py::module_& module);
void bindConfig(py::module_& module);
void bindCamera(py::module_& module);
void bindTrack(py::module_& module);
void bindSystemTrack(py::module_& module);
void bindAssociation(py::module_& module);
void bindObserver(py::module_& module);
void bindFusion(py::module_& module);
void bindHostParameters(py::module_& module);
void bindInstallation(py::module_& module);
void bindReports(py::module_& module);
void bindGeometry(py::module_& module);
void bindPipeline(py::module_& module);
void bindRecordings(py::module_& module);
void bindWorkbench(py::module_& module);
void bindCalibration(py::module_& module);
void bindMetrics(py::module_& module);

}  // namespace Bindings
