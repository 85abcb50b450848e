// SPDX-License-Identifier: Apache-2.0
#include "FusionTurn.h"

#include "Bindings.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>

namespace Bindings {
namespace {

struct State {
    std::mutex mutex;
    std::condition_variable isFree;
    bool isTaken = false;
    std::optional<std::string> object;  ///< name of the object that has the turn
};

State& state() {
    static State shared;
    return shared;
}

}  // namespace

FusionTurn::FusionTurn(Holder holder, const std::string& name) {
    const py::gil_scoped_release unlocked;
    State& turn = state();
    std::unique_lock<std::mutex> lock(turn.mutex);
    turn.isFree.wait(lock, [&] { return !turn.isTaken || turn.object; });
    if (turn.isTaken) {
        throw std::runtime_error(
            "a " + *turn.object +
            " is in use in this process, where only one fusion can number system tracks at a "
            "time: close() it first, or use another process (veskar.map)");
    }
    turn.isTaken = true;
    turn.object = holder == Holder::Object ? std::optional<std::string>(name) : std::nullopt;
}

FusionTurn::~FusionTurn() {
    State& turn = state();
    {
        const std::lock_guard<std::mutex> lock(turn.mutex);
        turn.isTaken = false;
        turn.object.reset();
    }
    turn.isFree.notify_all();
}

void FusionTurn::forgetAfterFork() {
    // A mutex that another thread held cannot be unlocked any more.
    new (&state()) State;
}

}  // namespace Bindings
