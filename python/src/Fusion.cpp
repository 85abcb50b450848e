// SPDX-License-Identifier: Apache-2.0
#include <veskar/FusionModule.h>

#include "FusionTurn.h"
#include "ObserverAdapter.h"
#include "Tracks.h"

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Bindings {
namespace {

using Veskar::FusionModule;
using Veskar::Source;
using SensorTracks = std::vector<std::shared_ptr<Veskar::Track>>;

FusionModule::SteadyClock clockOf(const py::object& seconds) {
    if (seconds.is_none()) {
        return [] { return std::chrono::steady_clock::now().time_since_epoch(); };
    }
    return [seconds] {
        const py::gil_scoped_acquire lock;
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::duration<double>(seconds().cast<double>()));
    };
}

/// A fusion module that has the turn, and what it calls in Python.
class Module {
public:
    Module(const Veskar::Config& config, const py::object& clock)
        : turn_(std::in_place, FusionTurn::Holder::Object, "FusionModule"),
          module_(std::in_place, config, clockOf(clock)) {}

    /// Runs what may take long, or call Python, without the interpreter lock.
    template <typename Function>
    void run(Function function) {
        FusionModule& module = get();
        isBusy_ = true;
        try {
            const py::gil_scoped_release unlocked;
            function(module);
        } catch (...) {
            isBusy_ = false;
            throw;
        }
        isBusy_ = false;
        if (observer_) {
            observer_->rethrow();
        }
    }

    FusionModule& get() {
        if (!module_) {
            throw std::runtime_error("the FusionModule is closed");
        }
        if (isBusy_) {
            throw std::runtime_error(
                "the FusionModule is fusing: call it from one thread at a "
                "time, and not from its observer");
        }
        return *module_;
    }

    void setObserver(const py::object& listener) {
        auto adapter = listener.is_none() ? nullptr : std::make_unique<ObserverAdapter>(listener);
        get().setObserver(adapter.get());
        observer_ = std::move(adapter);
    }

    py::object observer() const { return observer_ ? observer_->listener() : py::none(); }

    void close() {
        if (module_) {
            get();  // not while it fuses
        }
        module_.reset();
        observer_.reset();
        turn_.reset();
    }

private:
    std::optional<FusionTurn> turn_;
    std::unique_ptr<ObserverAdapter> observer_;
    std::optional<FusionModule> module_;
    bool isBusy_ = false;  ///< changed with the interpreter lock only
};

}  // namespace

void bindFusion(py::module_& module) {
    py::class_<Module>(module, "FusionModule",
                       "Fuses radar and video tracks into system tracks.\n\n"
                       "One fusion works in a process at a time: close() it, or use it in a with "
                       "statement, before the next. Ids of system tracks then begin with 1 again.")
        .def(py::init<const Veskar::Config&, const py::object&>(), py::arg("config"),
             py::arg("clock") = py::none(),
             "Parameters\n----------\n"
             "config : Config\n    copied\n"
             "clock : callable, optional\n"
             "    monotonic clock of the frames' time base, s; default: that of the system")
        .def(
            "cycle",
            [](Module& self, Source source, double timestamp, const SensorTracks& tracks) {
                complete(tracks);
                self.run([&](FusionModule& fusion) { fusion.cycle(source, timestamp, tracks); });
            },
            py::arg("source"), py::arg("timestamp"), py::arg("tracks"),
            "Takes one frame of a sensor.\n\n"
            "A video frame is fused at once; radar frames wait until video time has come within "
            "0.1 s.\n\n"
            "Parameters\n----------\n"
            "source : Source\n    VIDEO or RADAR\n"
            "timestamp : float\n    time of the frame, s\n"
            "tracks : list of Track\n    shared with the module, which predicts them later on")
        .def(
            "cycle_frame",
            [](Module& self, Source source, double timestamp, const SensorTracks& tracks) {
                complete(tracks);
                self.run(
                    [&](FusionModule& fusion) { fusion.cycleFrame(source, timestamp, tracks); });
            },
            py::arg("source"), py::arg("timestamp"), py::arg("tracks"),
            "Fuses one frame at once, without the checks of cycle().")
        .def(
            "predict_tracks",
            [](Module& self, double timestamp) {
                self.run([&](FusionModule& fusion) { fusion.predictTracks(timestamp); });
            },
            py::arg("timestamp"), "Moves all tracks to a time, s.")
        .def(
            "is_far_in_time",
            [](Module& self, double timestamp) { return self.get().isFarInTime(timestamp); },
            py::arg("timestamp"), "Whether cycle() would take a stamp for another time base.")
        .def(
            "waits_for_video",
            [](Module& self, double timestamp) { return self.get().waitsForVideo(timestamp); },
            py::arg("timestamp"), "Whether cycle() would let a radar frame wait for video.")
        .def(
            "clear", [](Module& self) { self.get().clear(); }, "Forgets all tracks; ids go on.")
        .def_property_readonly(
            "system_tracks", [](Module& self) { return self.get().systemTracks; },
            "all live system tracks, oldest first: a new list")
        .def_property("observer", &Module::observer, &Module::setObserver,
                      "a FusionObserver, or None; an exception in it reaches the caller of cycle "
                      "when the frame is done")
        .def("close", &Module::close, "Ends the fusion, so that another one may begin.")
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](Module& self, const py::args&) { self.close(); });

    py::module_::import("os").attr("register_at_fork")(
        py::arg("after_in_child") = py::cpp_function(&FusionTurn::forgetAfterFork));
}

}  // namespace Bindings
