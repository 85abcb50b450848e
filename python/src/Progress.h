// SPDX-License-Identifier: Apache-2.0
// What long work does now and then: tell how far it is, and let Ctrl-C end it.
#pragma once

#include "Bindings.h"

#include <chrono>
#include <utility>

namespace Bindings {

/// Called for every line, without the interpreter lock, which it takes ten times a second.
class Progress {
public:
    /// @param listener receives the completed part, 0 to 1, negative when unknown; or None
    explicit Progress(py::object listener) : listener_(std::move(listener)) {}

    /// @throw py::error_already_set KeyboardInterrupt, or what the listener throws
    void operator()(double fraction) {
        const auto now = std::chrono::steady_clock::now();
        if (now < next_) {
            return;
        }
        next_ = now + std::chrono::milliseconds(100);
        const py::gil_scoped_acquire lock;
        if (PyErr_CheckSignals() != 0) {
            throw py::error_already_set();
        }
        if (!listener_.is_none()) {
            listener_(fraction);
        }
    }

private:
    py::object listener_;
    std::chrono::steady_clock::time_point next_;
};

/// Shows a text as a Python warning; takes the interpreter lock.
/// @throw py::error_already_set when warnings are errors
inline void warnInPython(const std::string& text) {
    const py::gil_scoped_acquire lock;
    if (PyErr_WarnEx(PyExc_UserWarning, text.c_str(), 2) != 0) {
        throw py::error_already_set();
    }
}

}  // namespace Bindings
