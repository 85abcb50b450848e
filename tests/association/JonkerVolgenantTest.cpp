// SPDX-License-Identifier: Apache-2.0
#include "association/JonkerVolgenant.h"
#include "association/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <algorithm>
#include <numeric>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::JonkerVolgenant;

namespace {

std::vector<int> solve(JonkerVolgenant& solver, const Costs& C) {
    const int n = static_cast<int>(C.size());
    solver.start(n);
    for (int i = 0; i < n; ++i) {
        solver.setRow(i, C[i].data(), n);
    }
    return solver.solve();
}

/// One way to fill a square matrix.
struct Family {
    const char* name;
    double (*cost)(RandomEstimates& random, int row, int col);
};

const Family families[] = {
    {"Uniform", [](RandomEstimates& r, int, int) { return r.uniform(0.0, 100.0); }},
    {"TiedIntegers", [](RandomEstimates& r, int, int) { return double(r.integer(0, 9)); }},
    {"FewTiedIntegers", [](RandomEstimates& r, int, int) { return double(r.integer(0, 1)); }},
    {"Constant", [](RandomEstimates&, int, int) { return 7.0; }},
    {"Products", [](RandomEstimates&, int i, int j) { return double((i + 1) * (j + 1)); }},
    {"Gated", [](RandomEstimates& r, int,
                 int) { return r.integer(0, 9) < 2 ? r.uniform(0.0, 5.0) : 9999.0; }},
    {"GatedTied", [](RandomEstimates& r, int,
                     int) { return r.integer(0, 9) < 3 ? double(r.integer(0, 3)) : 9999.0; }},
    {"ForbiddenRowsAndColumns",
     [](RandomEstimates& r, int i, int j) {
         return i % 3 == 0 || j % 4 == 1 ? 9999.0 : r.uniform(0.0, 5.0);
     }},
    {"Negative", [](RandomEstimates& r, int, int) { return r.uniform(-50.0, 50.0); }},
    {"AboveForbidden", [](RandomEstimates& r, int, int) { return r.uniform(9000.0, 11000.0); }},
};

class SolverFamilies : public testing::TestWithParam<Family> {};

TEST_P(SolverFamilies, AgreeWithTheLiteralAlgorithm) {
    RandomEstimates random(11);
    JonkerVolgenant solver;
    for (int k = 0; k < 300; ++k) {
        const int n = k < 250 ? 1 + k % 12 : k < 298 ? 13 + k % 30 : 200;
        Costs C(n, std::vector<double>(n));
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) {
                C[i][j] = GetParam().cost(random, i, j);
            }
        }
        ASSERT_EQ(solve(solver, C), solveLiterally(C).columnOfRow) << "problem " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(All, SolverFamilies, testing::ValuesIn(families),
                         [](const auto& instance) { return std::string(instance.param.name); });

}  // namespace
