// SPDX-License-Identifier: Apache-2.0
// Tells a Python object what the fusion decides.
#pragma once

#include <veskar/FusionObserver.h>

#include "Bindings.h"

#include <exception>
#include <string>
#include <unordered_map>

namespace Bindings {

/// Calls the methods of a Python object that its class has beyond veskar.FusionObserver.
///
/// An exception of a method is kept, and the object is told nothing more, until the frame is done:
/// the fusion must not be left in the middle of one.
class ObserverAdapter : public Veskar::FusionObserver {
public:
    /// @param listener with methods as veskar.FusionObserver
    explicit ObserverAdapter(py::object listener);

    /// @return the object
    const py::object& listener() const { return listener_; }

    /// Throws what a method has thrown; called with the interpreter lock.
    void rethrow();

    void onFrame(const Frame& frame) override;
    void onContinuation(const Continuation& continuation) override;
    void onCandidate(const Candidate& candidate) override;
    void onMergeCandidate(const MergeCandidate& candidate) override;
    void onAssignment(const Link& link) override;
    void onMerge(int survivorId, int otherId) override;
    void onStart(const Link& link) override;
    void onStartWithheld(Veskar::Source source, int sensorTrackId, double coastingTime) override;
    void onConfirmation(int systemTrackId, double probability, double limit) override;
    void onPruning(const Pruning& pruning) override;
    void onDeletion(int systemTrackId, DeletionReason reason) override;
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override;
    bool wantsDecisions() const override { return wantsDecisions_; }

private:
    template <typename... Arguments>
    void tell(const char* method, const Arguments&... arguments);

    py::object listener_;
    std::unordered_map<std::string, py::object> methods_;  ///< those that the class has
    bool wantsDecisions_ = false;
    std::exception_ptr failure_;
};

}  // namespace Bindings
