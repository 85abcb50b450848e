// SPDX-License-Identifier: Apache-2.0
// Only the decisions about the selected track are explained.
#include "live/view/ObserverList.h"
#include "live/view/SubjectExplainer.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

/// Writes the names of what it is told, frame by frame.
class Notes : public FusionObserver {
public:
    explicit Notes(ViewContent::Lines lines) : lines_(std::move(lines)) {}

    void onFrame(const Frame& /*frame*/) override { lines_(std::exchange(text_, "frame")); }
    void onContinuation(const Continuation& /*continuation*/) override { text_ += " continued"; }
    void onCandidate(const Candidate& /*candidate*/) override { text_ += " candidate"; }
    void onMergeCandidate(const MergeCandidate& /*candidate*/) override { text_ += " mergeable"; }
    void onAssignment(const Link& /*link*/) override { text_ += " assigned"; }
    void onMerge(int /*survivor*/, int /*other*/) override { text_ += " merged"; }
    void onStart(const Link& /*link*/) override { text_ += " started"; }
    void onConfirmation(int /*id*/, double /*probability*/, double /*limit*/) override {
        text_ += " confirmed";
    }
    void onPruning(const Pruning& /*pruning*/) override { text_ += " pruned"; }
    void onDeletion(int /*id*/, DeletionReason /*reason*/) override { text_ += " deleted"; }
    void onStartWithheld(Source /*source*/, int /*id*/, double /*coasting*/) override {
        text_ += " startWithheld";
    }
    void onConfirmationWithheld(int /*id*/, double /*std*/, double /*limit*/) override {
        text_ += " confirmationWithheld";
    }

private:
    ViewContent::Lines lines_;
    std::string text_;
};

/// Tells an observer everything that can happen to a system track and a sensor track.
void tellAll(FusionObserver& observer, int system, Source source, int sensor) {
    FusionObserver::Continuation continuation;
    FusionObserver::Candidate candidate;
    FusionObserver::Pruning pruning;
    const auto link = [&](auto& about) {
        about.systemTrackId = system;
        about.source = source;
        about.sensorTrackId = sensor;
    };
    link(continuation);
    link(candidate);
    link(pruning);
    observer.onContinuation(continuation);
    observer.onCandidate(candidate);
    observer.onAssignment({system, source, sensor});
    FusionObserver::MergeCandidate merge;
    merge.olderId = system;
    merge.youngerId = system + 1000;
    observer.onMergeCandidate(merge);
    observer.onMerge(system + 1000, system);
    observer.onStart({system, source, sensor});
    observer.onStartWithheld(source, sensor, 1.0);
    observer.onConfirmation(system, 0.9, 0.5);
    observer.onConfirmationWithheld(system, 1.0, 0.5);
    observer.onPruning(pruning);
    observer.onDeletion(system, FusionObserver::DeletionReason());
}

/// @return the lines of an explainer of a subject that is told of two tracks
Lines explained(const Subject& subject) {
    Lines lines;
    ObserverList observers;
    observers.add(std::make_unique<SubjectExplainer>(
        subject, [](ViewContent::Lines to) { return std::make_unique<Notes>(std::move(to)); },
        [&](const std::string& line) { lines.push_back(line); }));
    observers.onFrame({});
    tellAll(observers, 7, Radar, 3);
    observers.onFrame({});
    tellAll(observers, 8, VideoObject, 3);
    observers.onFrame({});
    observers.onFrame({});
    return lines;
}

TEST(SubjectExplainer, ExplainsASystemTrack) {
    EXPECT_THAT(explained({{}, 7}),
                ElementsAre("frame continued candidate assigned mergeable merged started confirmed "
                            "confirmationWithheld pruned deleted"));
}

TEST(SubjectExplainer, ExplainsASensorTrack) {
    EXPECT_THAT(explained({VideoObject, 3}),
                ElementsAre("frame continued candidate assigned started startWithheld pruned"));
}

TEST(SubjectExplainer, SaysNothingWhereNothingWasDecided) {
    EXPECT_THAT(explained({{}, 3}), IsEmpty());
    EXPECT_THAT(explained({Radar, 7}), IsEmpty());
}

TEST(ObserverList, CanBeEmpty) {
    ObserverList observers;
    EXPECT_TRUE(observers.isEmpty());
    observers.add(std::make_unique<FusionObserver>());
    EXPECT_FALSE(observers.isEmpty());
    observers.clear();
    EXPECT_TRUE(observers.isEmpty());
}

}  // namespace
}  // namespace Veskar::Live
