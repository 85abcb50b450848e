// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

namespace Veskar::Host {

InputError::InputError(const std::string& reason) : std::runtime_error(reason), reason_(reason) {}

InputError::InputError(const std::string& key, const std::string& reason)
    : std::runtime_error(key + ": " + reason), key_(key), reason_(reason) {}

InputError::InputError(const std::string& place, const InputError& error)
    : std::runtime_error(place + ": " + error.what()),
      place_(error.place_.empty() ? place : place + ": " + error.place_),
      key_(error.key_),
      reason_(error.reason_) {}

}  // namespace Veskar::Host
