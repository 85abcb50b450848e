// SPDX-License-Identifier: Apache-2.0
// What the live program shows of itself in browsers.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>
#include <veskar-host/SensorFrame.h>
#include <veskar/FusionObserver.h>

#include "live/view/ViewSettings.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace Veskar::Live {

/// What the program brings along for its view.
struct ViewContent {
    /// Receives the decisions of a frame as a line of JSON, with line end.
    using Lines = std::function<void(const std::string&)>;
    /// Makes an observer that writes a line for each frame, when the next one begins.
    using MakeExplainer = std::function<std::unique_ptr<FusionObserver>(Lines)>;

    std::string page;   ///< HTML
    std::string hello;  ///< what each viewer is told first: JSON on one line
    MakeExplainer makeExplainer;
};

/// Takes what happens in the fusion, for the viewers. The operations belong to the thread of the
/// fusion; they copy what is shown and never wait for a viewer. Without viewers they do nothing.
class LiveView {
public:
    /// Viewers get at most one state in this time, s.
    static constexpr double interval = 0.1;

    virtual ~LiveView() = default;

    /// @param adapter converts the sensors' reports from now on
    virtual void convertWith(std::shared_ptr<const Host::HostAdapter> adapter) = 0;
    /// @param frame that the fusion gets
    virtual void see(const Host::SensorFrame& frame) = 0;
    /// @param frame that has been fused
    virtual void show(const Host::FusedFrame& frame) = 0;
    /// @return whether a second has passed since the viewers were told the status
    virtual bool wantsStatus() = 0;
    /// @param status of the program, JSON on one line
    virtual void tell(std::string status) = 0;
    /// @return what wants to know the decisions of the fusion; null: no viewer has selected a track
    virtual FusionObserver* observer() = 0;
    /// @return the port where the view is served
    virtual std::uint16_t port() const = 0;
};

/// @return why this program has no live view; empty when it has
std::string viewMissing();

/// Serves the view on a thread of its own.
/// @param settings where, and for whom
/// @param content what is served
/// @return the view
/// @throw InputError when it cannot be served there, or the token cannot be read
std::unique_ptr<LiveView> makeView(const ViewSettings& settings, ViewContent content);

}  // namespace Veskar::Live
