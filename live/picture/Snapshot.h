// SPDX-License-Identifier: Apache-2.0
// Pictures that a camera gives at an address.
#pragma once

#include "live/picture/PictureSource.h"

#include <memory>
#include <string>

namespace Veskar::Live {

/// @return why this program cannot ask for pictures; empty: it can
std::string snapshotMissing();

/// @param url "http://...", "https://..." or "file:///..."
/// @param credentials file with user and password, as Credentials::read() takes it; empty: none
/// @return a source that asks the address; redirections are not followed, since they could carry
///         the password elsewhere
/// @throw InputError when the credentials cannot be read, or the program cannot ask for pictures
std::unique_ptr<PictureSource> makeSnapshot(const std::string& url, const std::string& credentials);

}  // namespace Veskar::Live
