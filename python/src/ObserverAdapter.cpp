// SPDX-License-Identifier: Apache-2.0
#include "ObserverAdapter.h"

#include <utility>

namespace Bindings {

ObserverAdapter::ObserverAdapter(py::object listener) : listener_(std::move(listener)) {
    const py::object base = py::module_::import("veskar").attr("FusionObserver");
    for (const char* name :
         {"on_frame", "on_continuation", "on_candidate", "on_merge_candidate", "on_assignment",
          "on_merge", "on_start", "on_start_withheld", "on_confirmation", "on_pruning",
          "on_deletion", "on_confirmation_withheld"}) {
        const py::object inherited = base.attr(name);
        const py::object own = py::getattr(py::type::of(listener_), name, inherited);
        if (!own.is(inherited)) {
            methods_[name] = listener_.attr(name);
        }
    }
    wantsDecisions_ = methods_.size() > methods_.count("on_frame");
}

void ObserverAdapter::rethrow() {
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

template <typename... Arguments>
void ObserverAdapter::tell(const char* method, const Arguments&... arguments) {
    const auto found = methods_.find(method);
    if (failure_ || found == methods_.end()) {
        return;
    }
    const py::gil_scoped_acquire lock;
    try {
        found->second(arguments...);
    } catch (py::error_already_set&) {
        failure_ = std::current_exception();
    }
}

void ObserverAdapter::onFrame(const Frame& frame) {
    tell("on_frame", frame);
}

void ObserverAdapter::onContinuation(const Continuation& continuation) {
    tell("on_continuation", continuation);
}

void ObserverAdapter::onCandidate(const Candidate& candidate) {
    tell("on_candidate", candidate);
}

void ObserverAdapter::onMergeCandidate(const MergeCandidate& candidate) {
    tell("on_merge_candidate", candidate);
}

void ObserverAdapter::onAssignment(const Link& link) {
    tell("on_assignment", link);
}

void ObserverAdapter::onMerge(int survivorId, int otherId) {
    tell("on_merge", survivorId, otherId);
}

void ObserverAdapter::onStart(const Link& link) {
    tell("on_start", link);
}

void ObserverAdapter::onStartWithheld(Veskar::Source source, int sensorTrackId,
                                      double coastingTime) {
    tell("on_start_withheld", source, sensorTrackId, coastingTime);
}

void ObserverAdapter::onConfirmation(int systemTrackId, double probability, double limit) {
    tell("on_confirmation", systemTrackId, probability, limit);
}

void ObserverAdapter::onPruning(const Pruning& pruning) {
    tell("on_pruning", pruning);
}

void ObserverAdapter::onDeletion(int systemTrackId, DeletionReason reason) {
    tell("on_deletion", systemTrackId, reason);
}

void ObserverAdapter::onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) {
    tell("on_confirmation_withheld", systemTrackId, rangeStd, limit);
}

}  // namespace Bindings
