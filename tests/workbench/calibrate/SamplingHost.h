// SPDX-License-Identifier: Apache-2.0
// A host whose fusion sends calibration samples.
#pragma once

#include "KnownErrors.h"

#include <string>

namespace VeskarTest {

/// Fuses a recording with the configuration of the shipped file, as fast as the receiver of
/// "/tmp/autocalibration.sock" reads.
/// @param recording what the sensors of the device see
void fuseAndSendSamples(const KnownErrors& recording);

/// @param path of a Unix socket
/// @param text sent there
void sendDatagram(const std::string& path, const std::string& text);

}  // namespace VeskarTest
