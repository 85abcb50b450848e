// SPDX-License-Identifier: Apache-2.0
// Carries exceptions past C code.
#pragma once

#include <exception>
#include <utility>

namespace Veskar::Live {

/// Keeps the first exception that callbacks of a C library throw, until it may go on.
class CallbackThrow {
public:
    /// Runs the body of a callback.
    /// @param body what may throw
    template <typename Body>
    void hold(Body body) noexcept {
        try {
            body();
        } catch (...) {
            if (!thrown_) {
                thrown_ = std::current_exception();
            }
        }
    }

    /// Called when the C library has returned.
    /// @throw what a body threw since the last call
    void release() {
        if (thrown_) {
            std::rethrow_exception(std::exchange(thrown_, nullptr));
        }
    }

private:
    std::exception_ptr thrown_;
};

}  // namespace Veskar::Live
