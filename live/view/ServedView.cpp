// SPDX-License-Identifier: Apache-2.0
#include "live/view/ServedView.h"

#include <utility>

namespace Veskar::Live {

ServedView::ServedView(const ViewSettings& settings, ViewContent content)
    : makeExplainer_(std::move(content.makeExplainer)),
      server_(settings.place,
              Admission(settings.token.empty() ? "" : Admission::readToken(settings.token),
                        settings.names),
              std::move(content.page), content.hello, mailbox_, audience_) {
    if (settings.pictures) {
        pictures_.emplace(makePictureSource(*settings.pictures), settings.pictures->interval,
                          audience_, mailbox_);
    }
}

void ServedView::convertWith(std::shared_ptr<const Host::HostAdapter> adapter) {
    adapter_ = std::move(adapter);
}

void ServedView::see(const Host::SensorFrame& frame) {
    if (audience_.isThere()) {
        (frame.source == Radar ? radar_ : video_) = frame;
    }
}

void ServedView::show(const Host::FusedFrame& frame) {
    const Clock::time_point now = Clock::now();
    if (!audience_.isThere() || !adapter_ || now < nextState_) {
        return;
    }
    // By a grid, so that frames that come a little late do not halve the rate.
    nextState_ +=
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(interval));
    if (nextState_ < now) {
        nextState_ = now + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(interval / 2));
    }
    mailbox_.post(ViewState{frame, video_, radar_, adapter_});
}

bool ServedView::wantsStatus() {
    const Clock::time_point now = Clock::now();
    if (!audience_.isThere() || now < nextStatus_) {
        return false;
    }
    nextStatus_ = now + std::chrono::seconds(1);
    return true;
}

void ServedView::tell(std::string status) {
    mailbox_.post(std::move(status));
}

FusionObserver* ServedView::observer() {
    if (const std::uint64_t version = audience_.version(); version != subjectsVersion_) {
        subjectsVersion_ = version;
        observers_.clear();
        for (const Subject& subject : audience_.subjects()) {
            observers_.add(std::make_unique<SubjectExplainer>(
                subject, makeExplainer_, [this, subject](const std::string& line) {
                    mailbox_.post(Decision{subject, line});
                }));
        }
    }
    return observers_.isEmpty() ? nullptr : &observers_;
}

std::string viewMissing() {
    return {};
}

std::unique_ptr<LiveView> makeView(const ViewSettings& settings, ViewContent content) {
    return std::make_unique<ServedView>(settings, std::move(content));
}

}  // namespace Veskar::Live
