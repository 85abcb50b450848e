// SPDX-License-Identifier: Apache-2.0
// Finds peers that are gone without a word.
#pragma once

namespace Veskar::Live {

/// Lets the system ask a peer that is silent whether it is there: one that lost power or network
/// counts as gone after 25 s. Has no effect on Unix sockets.
/// @param connection a stream socket
void askWhenSilent(int connection);

}  // namespace Veskar::Live
