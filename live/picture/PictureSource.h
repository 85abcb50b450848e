// SPDX-License-Identifier: Apache-2.0
// Where pictures of the camera come from.
#pragma once

#include "live/picture/Picture.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace Veskar::Live {

/// What the live view is told about pictures: a directory or an address.
struct PictureSettings {
    std::string directory;    ///< the newest of its pictures is shown; empty: an address is asked
    std::string url;          ///< gives the picture of now
    std::string credentials;  ///< file with user and password for the address; empty: none
    double interval = 1.0;    ///< between two looks, s
};

/// Looks for new pictures. Used by one thread.
class PictureSource {
public:
    virtual ~PictureSource() = default;

    /// May wait for the camera some seconds.
    /// @param isEnding becomes true when waiting has lost its purpose
    /// @return the newest picture; nothing: it is the one that was returned last
    /// @throw InputError why there is none, in words for viewers, without path, address or secret
    virtual std::optional<Picture> next(const std::atomic<bool>& isEnding) = 0;
};

/// @param settings what is wanted
/// @return the source
/// @throw InputError when its credentials cannot be read
std::unique_ptr<PictureSource> makePictureSource(const PictureSettings& settings);

}  // namespace Veskar::Live
