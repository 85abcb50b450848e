// SPDX-License-Identifier: Apache-2.0
// The error of faulty input, with a message for its author.
#pragma once

#include <veskar-host/ExportHost.h>

#include <stdexcept>

namespace Veskar::Host {

/// Faulty input, or an output file that cannot be written. The message is for users: it names the
/// place (as "FILE:LINE: " or "camera.position: ") and the fault.
class VESKAR_HOST_EXPORT InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Veskar::Host
