// SPDX-License-Identifier: Apache-2.0
// What the live view is told.
#pragma once

#include "live/picture/PictureSource.h"
#include "live/transport/ListeningSocket.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>

namespace Veskar::Live {

/// Where the live view is served, and for whom.
struct ViewSettings {
    static constexpr std::uint16_t usualPort = 8650;

    NetworkPlace place{"127.0.0.1", usualPort};
    std::string token;            ///< file with the password of the viewers; empty: none
    std::set<std::string> names;  ///< of this machine, by which viewers may call it
    std::optional<PictureSettings> pictures;  ///< of the camera, behind the boxes

    /// @return whether only this machine reaches the place
    bool isLocal() const;
};

}  // namespace Veskar::Live
