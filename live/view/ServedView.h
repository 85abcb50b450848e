// SPDX-License-Identifier: Apache-2.0
// The live view of a program that can serve it.
#pragma once

#include "live/view/Audience.h"
#include "live/view/LiveView.h"
#include "live/view/ObserverList.h"
#include "live/view/PictureFeed.h"
#include "live/view/SubjectExplainer.h"
#include "live/view/ViewMailbox.h"
#include "live/view/ViewServer.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace Veskar::Live {

/// Copies what is shown into the mailbox of a server.
class ServedView : public LiveView {
public:
    /// @param settings where, and for whom
    /// @param content what is served
    /// @throw InputError when it cannot be served there, or the token cannot be read
    ServedView(const ViewSettings& settings, ViewContent content);

    void convertWith(std::shared_ptr<const Host::HostAdapter> adapter) override;
    void see(const Host::SensorFrame& frame) override;
    void show(const Host::FusedFrame& frame) override;
    bool wantsStatus() override;
    void tell(std::string status) override;
    FusionObserver* observer() override;
    std::uint16_t port() const override { return server_.port(); }

private:
    using Clock = std::chrono::steady_clock;

    ViewContent::MakeExplainer makeExplainer_;
    std::shared_ptr<const Host::HostAdapter> adapter_;
    std::optional<Host::SensorFrame> video_;
    std::optional<Host::SensorFrame> radar_;
    Clock::time_point nextState_;
    Clock::time_point nextStatus_;
    std::uint64_t subjectsVersion_ = 0;
    Audience audience_;
    ViewMailbox mailbox_;
    ObserverList observers_;
    ViewServer server_;  // ends before what it uses
    std::optional<PictureFeed> pictures_;
};

}  // namespace Veskar::Live
