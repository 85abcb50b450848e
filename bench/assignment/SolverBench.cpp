// SPDX-License-Identifier: Apache-2.0
// The assignment solver on typical problems of tracking, compared with the literal algorithm.
#include "assignment/AssignmentSolver.h"
#include "assignment/LiteralSolver.h"
#include "support/RandomEstimates.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

using VeskarTest::Costs;
using VeskarTest::RandomEstimates;

constexpr double forbidden = Veskar::forbiddenCost;

Costs fill(int rows, int cols, double cost) {
    return Costs(rows, std::vector<double>(cols, cost));
}

/// @param draw the cost of one cell
template <typename Draw>
Costs drawAll(int n, Draw draw) {
    Costs costs = fill(n, n, 0.0);
    for (auto& row : costs) {
        std::generate(row.begin(), row.end(), draw);
    }
    return costs;
}

Costs makeUniform(RandomEstimates& random, int n) {
    return drawAll(n, [&] { return random.uniform(0.0, 100.0); });
}

/// One to three allowed cells per row, one of which is in a column of its own.
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
    return drawAll(n, [&] { return random.integer(0, 9); });
}

/// Forbidden cells beside allowed ones with nearly equal costs.
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

/// All rows but the first compete for one column fewer than their number, at nearly equal costs:
/// prices rise in tiny steps up to the forbidden cost.
Costs makePriceWar(RandomEstimates& random, int n, double step) {
    Costs costs = fill(n, n, forbidden);
    costs[0][0] = 1.0;
    costs[0][n - 1] = 2.0;
    for (int i = 1; i < n; ++i) {
        for (int j = 1; j < n - 1; ++j) {
            costs[i][j] = 1.0 + step * random.uniform(0.0, 1.0);
        }
    }
    return costs;
}

/// Sensor tracks of a crowd: many rows, few columns.
Costs makeTall(RandomEstimates& random, int n) {
    Costs costs = makeUniform(random, n);
    for (auto& row : costs) {
        row.resize(n / 8);
    }
    return costs;
}

using Maker = Costs (*)(RandomEstimates&, int);

std::vector<Costs> makeProblems(Maker make, int n) {
    RandomEstimates random(7);
    const int count = n < 100 ? 32 : 4;
    std::vector<Costs> problems;
    problems.reserve(count);
    for (int k = 0; k < count; ++k) {
        problems.push_back(make(random, n));
    }
    return problems;
}

template <Maker make>
void solver(benchmark::State& state) {
    const auto problems = makeProblems(make, static_cast<int>(state.range(0)));
    const std::size_t rows = problems[0].size();
    const std::size_t cols = problems[0][0].size();
    const VeskarTest::Allowed allowed(rows, std::vector<bool>(cols, false));
    Veskar::AssignmentSolver solver;
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            solver.solve(problems[k++ % problems.size()], allowed, rows, cols).data());
    }
}

template <Maker make>
void literal(benchmark::State& state) {
    const auto problems = makeProblems(make, static_cast<int>(state.range(0)));
    const int rows = static_cast<int>(problems[0].size());
    const int cols = static_cast<int>(problems[0][0].size());
    const VeskarTest::Allowed allowed(rows, std::vector<bool>(cols, false));
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            VeskarTest::runLiterally(rows, cols, problems[k++ % problems.size()], allowed));
    }
}

template <int exponent>
Costs makeNearTied(RandomEstimates& random, int n) {
    return makeNearTied(random, n, std::pow(10.0, -exponent));
}

template <int exponent>
Costs makePriceWar(RandomEstimates& random, int n) {
    return makePriceWar(random, n, std::pow(10.0, -exponent));
}

const std::vector<std::int64_t> all = {16, 32, 64, 128, 256, 512};
const std::vector<std::int64_t> small = {4, 8, 16, 32, 64};

#define VESKAR_SOLVER_BENCH(name, make, sizes)                                    \
    BENCHMARK_TEMPLATE(solver, make)->ArgsProduct({sizes})->Name("solver/" name); \
    BENCHMARK_TEMPLATE(literal, make)->ArgsProduct({sizes})->Name("solver/" name "/literal")

VESKAR_SOLVER_BENCH("uniform", makeUniform, all);
VESKAR_SOLVER_BENCH("partnered", makePartnered, all);
VESKAR_SOLVER_BENCH("sparse", makeSparse, all);
VESKAR_SOLVER_BENCH("tied", makeTied, all);
VESKAR_SOLVER_BENCH("tall", makeTall, all);
VESKAR_SOLVER_BENCH("uniformSmall", makeUniform, small);
VESKAR_SOLVER_BENCH("nearTied4", makeNearTied<4>, small);
VESKAR_SOLVER_BENCH("nearTied8", makeNearTied<8>, small);
VESKAR_SOLVER_BENCH("nearTied12", makeNearTied<12>, small);
VESKAR_SOLVER_BENCH("priceWar4", makePriceWar<4>, small);
VESKAR_SOLVER_BENCH("priceWar8", makePriceWar<8>, small);
VESKAR_SOLVER_BENCH("priceWar12", makePriceWar<12>, small);

}  // namespace
