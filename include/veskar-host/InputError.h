// SPDX-License-Identifier: Apache-2.0
// What is wrong with an input, in words for the person who wrote it.
#pragma once

#include <veskar-host/ExportHost.h>

#include <stdexcept>

namespace Veskar::Host {

/// Bad input or an output that cannot be written. The text is meant for a person: it names the
/// place (as "FILE:LINE: " or "camera.position: ") and what is wrong there.
class VESKAR_HOST_EXPORT InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Veskar::Host
