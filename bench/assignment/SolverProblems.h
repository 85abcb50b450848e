// SPDX-License-Identifier: Apache-2.0
// The assignment problems on which solvers are measured.
#pragma once

#include "assignment/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <array>
#include <vector>

namespace VeskarBench {

using VeskarTest::Costs;
using VeskarTest::RandomEstimates;

/// A kind of problem; n is the larger number of rows or columns.
struct ProblemFamily {
    const char* name;
    Costs (*make)(RandomEstimates& random, int n);
};

/// The kinds that are measured at all sizes:
///
/// | Name | Costs |
/// |---|---|
/// | uniform | all pairs allowed, random costs |
/// | gated | one to three allowed pairs a row, one of them in a column of its own |
/// | alone | the same, and every fifth row has none |
/// | tied | all pairs allowed, costs are the integers from 0 to 9 |
/// | clustered | ten crowds; every pair within a crowd is allowed |
/// | nearTied | two of five pairs allowed, costs that differ by less than 1e-8 |
/// | tall | eight times more rows than columns, all pairs allowed |
/// | wide | eight times more columns than rows, all pairs allowed |
/// | euclidean | distances of places in the plane from others |
extern const std::array<ProblemFamily, 9> tableFamilies;

/// @return many problems of one kind, so that branch prediction does not learn them
std::vector<Costs> makeProblems(Costs (*make)(RandomEstimates&, int), int n);

/// @return a matrix of random costs, all pairs allowed
Costs makeUniform(RandomEstimates& random, int rows, int cols);

/// Two of five pairs are allowed, at nearly equal costs.
Costs makeNearTied(RandomEstimates& random, int n, double step);

}  // namespace VeskarBench
