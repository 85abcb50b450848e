// SPDX-License-Identifier: Apache-2.0
#include <veskar/TrackAssociator.h>

#include "Tracks.h"

#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

#include <pybind11/numpy.h>

namespace Bindings {
namespace {

using Veskar::SystemTrack;
using Veskar::Track;
using Veskar::TrackAssociator;
using SensorTracks = std::vector<std::shared_ptr<Track>>;
using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;

/// @return rows of equal length as a matrix of a NumPy type
template <typename Element, typename Value>
py::array_t<Element> matrixOf(const std::vector<std::vector<Value>>& rows, std::size_t columns) {
    py::array_t<Element> matrix({rows.size(), columns});
    auto cells = matrix.template mutable_unchecked<2>();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < columns; ++column) {
            cells(static_cast<py::ssize_t>(row), static_cast<py::ssize_t>(column)) =
                static_cast<Element>(rows[row][column]);
        }
    }
    return matrix;
}

py::tuple sensorToSystemCosts(TrackAssociator& self, const SensorTracks& sensorTracks,
                              const SystemTracks& systemTracks, Veskar::Source source) {
    std::vector<std::vector<double>> cost;
    std::vector<std::vector<bool>> allowed;
    std::vector<std::vector<int>> classMatch;
    self.sensorToSystemCostMatrix(complete(sensorTracks), complete(systemTracks), cost, allowed,
                                  classMatch, source);
    const std::size_t columns = sensorTracks.size();
    return py::make_tuple(matrixOf<double>(cost, columns), matrixOf<bool>(allowed, columns),
                          matrixOf<bool>(classMatch, columns));
}

py::tuple systemToSystemCosts(TrackAssociator& self, const SystemTracks& systemTracks,
                              const std::unordered_set<int>& excludedIds) {
    std::vector<std::vector<double>> cost;
    std::vector<std::vector<bool>> allowed;
    self.systemToSystemCostMatrix(complete(systemTracks), cost, allowed, excludedIds);
    return py::make_tuple(matrixOf<double>(cost, systemTracks.size()),
                          matrixOf<bool>(allowed, systemTracks.size()));
}

py::tuple associateSensors(TrackAssociator& self, const SensorTracks& sensorTracks,
                           const SystemTracks& systemTracks, Veskar::Source source) {
    complete(sensorTracks);
    std::unordered_set<int> removed;
    // Without system tracks the optimal path has no matrix to solve.
    const TrackAssociator::Associations pairs =
        complete(systemTracks).empty()
            ? TrackAssociator::Associations{}
            : self.sensorToSystemAssociation(sensorTracks, systemTracks, source, removed);
    return py::make_tuple(pairs, removed);
}

TrackAssociator::Associations associateSystems(TrackAssociator& self,
                                               const SystemTracks& systemTracks,
                                               const std::unordered_set<int>& excludedIds) {
    return complete(systemTracks).empty()
               ? TrackAssociator::Associations{}
               : self.systemToSystemAssociation(systemTracks, excludedIds);
}

/// @param matrix cells in rows and columns
/// @return its rows
template <typename Value, typename Element>
std::vector<std::vector<Value>> rowsOf(const py::array_t<Element>& matrix) {
    if (matrix.ndim() != 2) {
        throw py::value_error("a matrix has two dimensions");
    }
    const auto cells = matrix.template unchecked<2>();
    std::vector<std::vector<Value>> rows(static_cast<std::size_t>(cells.shape(0)));
    for (py::ssize_t row = 0; row < cells.shape(0); ++row) {
        for (py::ssize_t column = 0; column < cells.shape(1); ++column) {
            rows[static_cast<std::size_t>(row)].push_back(static_cast<Value>(cells(row, column)));
        }
    }
    return rows;
}

TrackAssociator::Associations runJva(const py::array_t<double, py::array::forcecast>& cost,
                                     const std::optional<py::array_t<bool>>& allowed) {
    auto costs = rowsOf<double>(py::array_t<double>(cost));
    if (costs.empty()) {
        return {};
    }
    auto permitted = allowed ? rowsOf<bool>(*allowed)
                             : std::vector<std::vector<bool>>(
                                   costs.size(), std::vector<bool>(costs.front().size(), true));
    if (permitted.size() != costs.size() || permitted.front().size() != costs.front().size()) {
        throw py::value_error("allowed: is not of the shape of cost");
    }
    TrackAssociator associator{Veskar::Config()};
    associator.runJVA(static_cast<int>(costs.size()), static_cast<int>(costs.front().size()), costs,
                      permitted);
    return associator.getAssociations();
}

}  // namespace

void bindAssociation(py::module_& module) {
    using Veskar::GatingResult;
    py::class_<GatingResult>(module, "GatingResult", "What the gate says about a pair of tracks.")
        .def_readonly("distance", &GatingResult::distance,
                      "without unit; 9999.0 when a class is not supported")
        .def_readonly("passed", &GatingResult::passed, "whether the pair lies inside the gate");
    const std::unordered_set<int> none;
    py::class_<TrackAssociator>(
        module, "TrackAssociator",
        "Gating, cost matrices and assignment.\n\n"
        "Matrices have a row per system track and a column per sensor track (or second system "
        "track).\nThe rules that remember the sensors learn in a FusionModule only: leave "
        "pairMemory and takeOver off here.")
        .def(py::init<const Veskar::Config&>(), py::arg("config"))
        .def("check_gating", &TrackAssociator::checkGating, py::arg("system_track").none(false),
             py::arg("sensor_track").none(false), "The statistical gate of a pair.")
        .def("is_supported_class", &TrackAssociator::isSupportedClass, py::arg("track").none(false),
             "Whether the class of a track takes part in fusion.")
        .def("have_matching_classes", &TrackAssociator::haveMatchingClasses,
             py::arg("system_track").none(false), py::arg("track").none(false), py::arg("source"),
             "Whether a sensor track and the other sensor's side are of one class group.")
        .def("sensor_to_system_cost_matrix", &sensorToSystemCosts, py::arg("sensor_tracks"),
             py::arg("system_tracks"), py::arg("source"),
             "(cost, allowed, class_match), each an array; a forbidden pair costs 9999.0.")
        .def("system_to_system_cost_matrix", &systemToSystemCosts, py::arg("system_tracks"),
             py::arg("excluded_ids") = none,
             "(cost, allowed) of system tracks that may be one object: row older, column younger.")
        .def("sensor_to_system_association", &associateSensors, py::arg("sensor_tracks"),
             py::arg("system_tracks"), py::arg("source"),
             "Associates the tracks of one source with system tracks.\n\n"
             "Returns\n-------\n"
             "pairs : list of (system index, sensor index)\n"
             "removed : set of ids of sensor tracks of another class (optimal path only)")
        .def("system_to_system_association", &associateSystems, py::arg("system_tracks"),
             py::arg("excluded_ids") = none, "Index pairs of system tracks that are one object.")
        .def(
            "is_occupied",
            [](const TrackAssociator& self, const Track& track, const SystemTracks& systemTracks) {
                return self.isOccupied(track, complete(systemTracks));
            },
            py::arg("track").none(false), py::arg("system_tracks"),
            "Whether one of the system tracks holds a track of that source and id.")
        .def_static("run_jva", &runJva, py::arg("cost"), py::arg("allowed") = py::none(),
                    "Solves an assignment problem optimally, after Jonker and Volgenant.\n\n"
                    "Parameters\n----------\n"
                    "cost : array\n    of pairs, 9999.0 where a pair must not be assigned\n"
                    "allowed : array of bool, optional\n    pairs to keep of what was assigned; "
                    "default: all\n\n"
                    "Returns\n-------\n"
                    "list of (row, column)\n    in ascending order of the rows\n\n"
                    "Raises\n------\nRuntimeError\n    when a side exceeds 512");
}

}  // namespace Bindings
