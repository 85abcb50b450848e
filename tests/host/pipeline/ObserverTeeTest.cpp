// SPDX-License-Identifier: Apache-2.0
#include "host/pipeline/ObserverTee.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using Veskar::FusionObserver;
using Veskar::Host::Internal::ObserverTee;

namespace {

/// Remembers what it is told, each with a value that comes with it.
class Listener : public FusionObserver {
public:
    void onFrame(const Frame& frame) override { add("frame", frame.timestamp); }
    void onContinuation(const Continuation& continuation) override {
        add("continuation", continuation.systemTrackId);
    }
    void onCandidate(const Candidate& candidate) override {
        add("candidate", candidate.systemTrackId);
    }
    void onMergeCandidate(const MergeCandidate& candidate) override {
        add("merge candidate", candidate.youngerId);
    }
    void onAssignment(const Link& link) override { add("assignment", link.sensorTrackId); }
    void onMerge(int survivorId, int otherId) override { add("merge", 100 * survivorId + otherId); }
    void onStart(const Link& link) override { add("start", link.sensorTrackId); }
    void onConfirmation(int systemTrackId, double probability, double limit) override {
        add("confirmation", systemTrackId + probability + limit);
    }
    void onStartWithheld(Veskar::Source /*source*/, int sensorTrackId, double coasting) override {
        add("start withheld", sensorTrackId + coasting);
    }
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override {
        add("confirmation withheld", systemTrackId + rangeStd + limit);
    }
    void onPruning(const Pruning& pruning) override { add("pruning", pruning.coastingTime); }
    void onDeletion(int systemTrackId, DeletionReason reason) override {
        add("deletion", systemTrackId + (reason == DeletionReason::RadarCopy ? 1000 : 0));
    }
    bool wantsDecisions() const override { return isCurious; }

    bool isCurious = true;
    std::vector<std::pair<std::string, double>> told;

private:
    void add(const char* what, double value) { told.emplace_back(what, value); }
};

void tellEverything(FusionObserver& observer) {
    FusionObserver::Frame frame;
    frame.timestamp = 1.5;
    observer.onFrame(frame);
    FusionObserver::Continuation continuation;
    continuation.systemTrackId = 2;
    observer.onContinuation(continuation);
    FusionObserver::Candidate candidate;
    candidate.systemTrackId = 3;
    observer.onCandidate(candidate);
    FusionObserver::MergeCandidate mergeCandidate;
    mergeCandidate.youngerId = 4;
    observer.onMergeCandidate(mergeCandidate);
    observer.onAssignment({1, Veskar::Radar, 5});
    observer.onMerge(6, 7);
    observer.onStart({1, Veskar::Radar, 8});
    observer.onStartWithheld(Veskar::Radar, 11, 0.125);
    observer.onConfirmation(9, 0.25, 0.5);
    observer.onConfirmationWithheld(12, 0.25, 0.5);
    FusionObserver::Pruning pruning;
    pruning.coastingTime = 0.75;
    observer.onPruning(pruning);
    observer.onDeletion(10, FusionObserver::DeletionReason::RadarCopy);
}

}  // namespace

TEST(ObserverTee, HandsEverythingOn) {
    Listener listener;
    ObserverTee tee;
    tee.setNext(&listener);
    tellEverything(tee);
    EXPECT_THAT(
        listener.told,
        ElementsAre(std::pair("frame", 1.5), std::pair("continuation", 2.0),
                    std::pair("candidate", 3.0), std::pair("merge candidate", 4.0),
                    std::pair("assignment", 5.0), std::pair("merge", 607.0),
                    std::pair("start", 8.0), std::pair("start withheld", 11.125),
                    std::pair("confirmation", 9.75), std::pair("confirmation withheld", 12.75),
                    std::pair("pruning", 0.75), std::pair("deletion", 1010.0)));
    tee.setNext(nullptr);
    tellEverything(tee);
    EXPECT_EQ(listener.told.size(), 12U);
}

TEST(ObserverTee, RemembersTheLastFrameUntilItIsTaken) {
    ObserverTee tee;
    EXPECT_FALSE(tee.takeFrame());
    tee.onFrame({Veskar::VideoObject, 1.0, 2, 3});
    tee.onFrame({Veskar::Radar, 4.0, 5, 6});
    const auto frame = tee.takeFrame();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->source, Veskar::Radar);
    EXPECT_EQ(frame->timestamp, 4.0);
    EXPECT_FALSE(tee.takeFrame());
}

TEST(ObserverTee, WantsDecisionsOnlyForOneThatDoes) {
    Listener listener;
    ObserverTee tee;
    EXPECT_FALSE(tee.wantsDecisions());
    tee.setNext(&listener);
    EXPECT_TRUE(tee.wantsDecisions());
    listener.isCurious = false;
    EXPECT_FALSE(tee.wantsDecisions());
}
