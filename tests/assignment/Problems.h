// SPDX-License-Identifier: Apache-2.0
// Assignment problems of many kinds.
#pragma once

#include "assignment/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <array>

namespace VeskarTest {

/// @return a square matrix of forbidden pairs, of which some are allowed
/// @param density probability of an allowed pair
Costs makeGated(RandomEstimates& random, int n, double density);

/// All rows but the first compete for one column less than they are, at costs that hardly differ:
/// prices rise in tiny steps up to the forbidden cost.
Costs makePriceWar(RandomEstimates& random, int n, double step);

/// One way to fill a square matrix.
struct Family {
    const char* name;
    Costs (*make)(RandomEstimates& random, int n);
};

extern const std::array<Family, 12> families;

}  // namespace VeskarTest
