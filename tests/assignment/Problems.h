// SPDX-License-Identifier: Apache-2.0
// Assignment problems of various kinds.
#pragma once

#include "assignment/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <array>

namespace VeskarTest {

/// @return a square matrix of forbidden and, at random, allowed pairs
/// @param density probability of an allowed pair
Costs makeGated(RandomEstimates& random, int n, double density);

/// All rows but the first compete for one column fewer than their number, at nearly equal costs:
/// prices rise in tiny steps up to the forbidden cost.
Costs makePriceWar(RandomEstimates& random, int n, double step);

/// A matrix of any shape: dense or sparse, in crowds, with rows and columns without a cell, with
/// costs that are far apart, tied, nearly tied, around the forbidden cost or not finite.
Costs makeAny(RandomEstimates& random, int rows, int cols);

/// A method to fill a square matrix.
struct Family {
    const char* name;
    Costs (*make)(RandomEstimates& random, int n);
};

extern const std::array<Family, 12> families;

}  // namespace VeskarTest
