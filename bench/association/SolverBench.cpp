// SPDX-License-Identifier: Apache-2.0
// The assignment solver on the kinds of problems that tracking makes, beside the literal algorithm.
#include "association/AssignmentSolver.h"
#include "association/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <array>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using VeskarTest::Costs;
using VeskarTest::RandomEstimates;

constexpr double forbidden = Veskar::forbiddenCost;

Costs fill(int rows, int cols, double cost) {
    return Costs(rows, std::vector<double>(cols, cost));
}

Costs makeUniform(RandomEstimates& random, int n) {
    Costs costs = fill(n, n, 0.0);
    for (auto& row : costs) {
        for (double& c : row) {
            c = random.uniform(0.0, 100.0);
        }
    }
    return costs;
}

/// One to three allowed cells in a row, one of them with a partner of its own.
Costs makeGated(RandomEstimates& random, int n, double withoutPartner) {
    Costs costs = fill(n, n, forbidden);
    for (int i = 0; i < n; ++i) {
        if (random.uniform(0.0, 1.0) < withoutPartner) {
            continue;
        }
        costs[i][i] = random.uniform(0.0, 4.0);
        for (int k = random.integer(0, 2); k > 0; --k) {
            costs[i][random.integer(0, n - 1)] = random.uniform(0.0, 4.0);
        }
    }
    return costs;
}

Costs makePartnered(RandomEstimates& random, int n) {
    return makeGated(random, n, 0.0);
}

Costs makeSparse(RandomEstimates& random, int n) {
    return makeGated(random, n, 0.2);
}

Costs makeTied(RandomEstimates& random, int n) {
    Costs costs = fill(n, n, 0.0);
    for (auto& row : costs) {
        for (double& c : row) {
            c = random.integer(0, 9);
        }
    }
    return costs;
}

/// Forbidden cells beside allowed ones whose costs hardly differ: where rows compete for fewer
/// columns, prices rise in tiny steps.
Costs makeNearTied(RandomEstimates& random, int n, double step) {
    Costs costs = fill(n, n, forbidden);
    for (auto& row : costs) {
        for (double& c : row) {
            if (random.uniform(0.0, 1.0) < 0.4) {
                c = 1.0 + step * random.uniform(0.0, 1.0);
            }
        }
    }
    return costs;
}

using Maker = Costs (*)(RandomEstimates&, int);

std::vector<Costs> makeProblems(Maker make, int n) {
    RandomEstimates random(7);
    std::vector<Costs> problems;
    for (int k = 0; k < (n < 100 ? 32 : 4); ++k) {
        problems.push_back(make(random, n));
    }
    return problems;
}

void solver(benchmark::State& state, Maker make) {
    const std::size_t n = state.range(0);
    const auto problems = makeProblems(make, static_cast<int>(n));
    const VeskarTest::Allowed allowed(n, std::vector<bool>(n, false));
    Veskar::AssignmentSolver solver;
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            solver.solve(problems[k++ % problems.size()], allowed, n, n).data());
    }
}

void literal(benchmark::State& state, Maker make) {
    const auto problems = makeProblems(make, static_cast<int>(state.range(0)));
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(VeskarTest::solveLiterally(problems[k++ % problems.size()]));
    }
}

template <int exponent>
Costs makeNearTied(RandomEstimates& random, int n) {
    double step = 1.0;
    for (int k = 0; k < exponent; ++k) {
        step /= 10.0;
    }
    return makeNearTied(random, n, step);
}

const std::vector<std::int64_t> allSizes = {16, 32, 64, 128, 256, 512};
const std::vector<std::int64_t> smallSizes = {4, 8, 16, 32, 64};

#define VESKAR_SOLVER_BENCH(name, make, sizes)                                \
    BENCHMARK_CAPTURE(solver, name, make)->ArgsProduct({sizes})->Name(#name); \
    BENCHMARK_CAPTURE(literal, name, make)->ArgsProduct({sizes})->Name(#name "/literal")

VESKAR_SOLVER_BENCH(uniform, makeUniform, allSizes);
VESKAR_SOLVER_BENCH(partnered, makePartnered, allSizes);
VESKAR_SOLVER_BENCH(sparse, makeSparse, allSizes);
VESKAR_SOLVER_BENCH(tied, makeTied, allSizes);
VESKAR_SOLVER_BENCH(uniformSmall, makeUniform, smallSizes);
VESKAR_SOLVER_BENCH(nearTied4, makeNearTied<4>, smallSizes);
VESKAR_SOLVER_BENCH(nearTied8, makeNearTied<8>, smallSizes);
VESKAR_SOLVER_BENCH(nearTied12, makeNearTied<12>, smallSizes);

}  // namespace
