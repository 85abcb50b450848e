// SPDX-License-Identifier: Apache-2.0
// Prelude of snippets with a host's sensors.
#include <veskar-host/veskar-host.h>

#include <optional>

std::optional<Veskar::Host::SensorFrame> nextFrame() {
    return std::nullopt;
}

// snippet

int main() {}
