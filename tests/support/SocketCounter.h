// SPDX-License-Identifier: Apache-2.0
// Counts the sockets that this process opens.
#pragma once

namespace VeskarTest {

/// @return calls of socket() since the program started
int openedSockets();

}  // namespace VeskarTest
