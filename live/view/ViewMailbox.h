// SPDX-License-Identifier: Apache-2.0
// Hands what is shown from the fusion to the server.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/HostAdapter.h>
#include <veskar-host/SensorFrame.h>

#include "live/picture/Picture.h"
#include "live/view/Subject.h"
#include "src/net/FileDescriptor.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Veskar::Live {

/// The objects and what the sensors see of them.
struct ViewState {
    Host::FusedFrame fused;
    std::optional<Host::SensorFrame> video;  ///< the last one
    std::optional<Host::SensorFrame> radar;  ///< the last one
    std::shared_ptr<const Host::HostAdapter> adapter;
};

/// What was decided about a track in a frame.
struct Decision {
    Subject subject;
    std::string line;  ///< JSON, with line end
};

/// What the camera shows.
struct CameraPicture {
    std::shared_ptr<const Picture> picture;  ///< null: there is none
    std::string fault;                       ///< why there is none
};

/// A bounded hand-over: a newer state replaces one that was not taken, so that the fusion never
/// waits and a slow server shows the newest. The lock is held for the swap of pointers only.
class ViewMailbox {
public:
    /// Further decisions of one hand-over are left out.
    static constexpr std::size_t mostDecisions = 256;

    struct Contents {
        std::optional<ViewState> state;
        std::optional<std::string> status;
        std::vector<Decision> decisions;
        std::optional<CameraPicture> picture;
    };

    /// @throw std::system_error
    ViewMailbox();

    /// @param state replaces the one before
    void post(ViewState state);
    /// @param status replaces the one before
    void post(std::string status);
    /// @param decision added, up to mostDecisions
    void post(Decision decision);
    /// @param picture replaces the one before
    void post(CameraPicture picture);
    /// Wakes the reader without handing over anything.
    void wake();

    /// @return a descriptor that becomes readable when something was posted
    int descriptor() const { return woken_.get(); }
    /// @return what was posted since the last call
    Contents take();

private:
    FileDescriptor woken_;  ///< an eventfd
    std::mutex mutex_;
    Contents contents_;
};

}  // namespace Veskar::Live
