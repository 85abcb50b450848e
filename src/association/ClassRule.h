// SPDX-License-Identifier: Apache-2.0
// When a system track gives up candidates of another class.
#pragma once

#include <cstddef>

namespace Veskar {

/// A system track that has a candidate of its class inside its gate gives up every candidate of
/// another class; without one it keeps them.
///
/// @param cols number of candidates
/// @param agrees by column: whether the classes agree
/// @param inGate by column: whether the pair lies inside the gate
/// @param giveUp called in ascending order with every column that is given up
template <typename Agrees, typename InGate, typename GiveUp>
void giveUpMismatches(std::size_t cols, Agrees agrees, InGate inGate, GiveUp giveUp) {
    std::size_t j = 0;
    while (j < cols && !(agrees(j) && inGate(j))) {
        ++j;
    }
    if (j == cols) {
        return;
    }
    for (j = 0; j < cols; ++j) {
        if (!agrees(j)) {
            giveUp(j);
        }
    }
}

}  // namespace Veskar
