// SPDX-License-Identifier: Apache-2.0
// What the classes of Python that fuse have in common.
#pragma once

#include "FusionTurn.h"
#include "ObserverAdapter.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace Bindings {

/// A fusion that has the turn until it is closed, and its observer in Python.
template <typename Fusion>
class Session {
public:
    /// @param name of the class in Python
    /// @param arguments of the fusion's constructor
    template <typename... Arguments>
    explicit Session(std::string name, Arguments&&... arguments)
        : name_(std::move(name)),
          turn_(std::in_place, FusionTurn::Holder::Object, name_),
          fusion_(std::in_place, std::forward<Arguments>(arguments)...) {}

    /// Runs what may take long, or call Python, without the interpreter lock.
    /// @param function receives the fusion
    template <typename Function>
    void run(Function function) {
        Fusion& fusion = get();
        isBusy_ = true;
        try {
            const py::gil_scoped_release unlocked;
            function(fusion);
        } catch (...) {
            isBusy_ = false;
            throw;
        }
        isBusy_ = false;
        if (observer_) {
            observer_->rethrow();
        }
    }

    /// @return the fusion
    /// @throw std::runtime_error when it is closed, or fusing
    Fusion& get() {
        if (!fusion_) {
            throw std::runtime_error("the " + name_ + " is closed");
        }
        if (isBusy_) {
            throw std::runtime_error("the " + name_ +
                                     " is fusing: call it from one thread at a time, and not from "
                                     "its observer");
        }
        return *fusion_;
    }

    void setObserver(const py::object& listener) {
        auto adapter = listener.is_none() ? nullptr : std::make_unique<ObserverAdapter>(listener);
        get().setObserver(adapter.get());
        observer_ = std::move(adapter);
    }

    py::object observer() const { return observer_ ? observer_->listener() : py::none(); }

    void close() {
        if (fusion_) {
            get();  // not while it fuses
        }
        fusion_.reset();
        observer_.reset();
        turn_.reset();
    }

private:
    std::string name_;
    std::optional<FusionTurn> turn_;
    std::unique_ptr<ObserverAdapter> observer_;
    std::optional<Fusion> fusion_;
    bool isBusy_ = false;  ///< changed with the interpreter lock only
};

/// Adds observer, close() and the with statement.
/// @param type a class that is a Session
/// @param note appended to the observer's description
template <typename T>
void addSession(py::class_<T>& type, const std::string& note) {
    type.def_property("observer", &T::observer, &T::setObserver,
                      ("a FusionObserver, or None" + note).c_str())
        .def("close", &T::close, "Ends the fusion, so that another one may begin.")
        .def("__enter__", [](const py::object& self) { return self; })
        .def("__exit__", [](T& self, const py::args&) { self.close(); });
}

}  // namespace Bindings
