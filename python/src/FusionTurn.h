// SPDX-License-Identifier: Apache-2.0
// One fusion at a time: the library numbers system tracks globally.
#pragma once

#include <string>

namespace Bindings {

/// The right to fuse in this process. Called with the interpreter lock, which is released while
/// waiting.
class FusionTurn {
public:
    /// Who asks: an object keeps its turn until it is closed, a function until it returns.
    enum class Holder { Object, Function };

    /// Waits for a function on another thread to return.
    /// @param holder who asks
    /// @param name of the object, for messages
    /// @throw std::runtime_error when an object has the turn
    FusionTurn(Holder holder, const std::string& name);
    ~FusionTurn();
    FusionTurn(const FusionTurn&) = delete;
    FusionTurn& operator=(const FusionTurn&) = delete;

    /// Gives the turn back in a forked process, where the threads of the parent are missing.
    static void forgetAfterFork();
};

}  // namespace Bindings
