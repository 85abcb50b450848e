// SPDX-License-Identifier: Apache-2.0
// The assignment solver as hosts call it, beside a textbook solver of its own on the same problems,
// and on price wars beside the literal algorithm.
#include <veskar/TrackAssociator.h>

#include "assignment/LiteralSolver.h"
#include "assignment/Problems.h"
#include "assignment/ReferenceSolver.h"
#include "assignment/SolverProblems.h"
#include "assignment/SparseCosts.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

using namespace VeskarBench;

namespace {

using VeskarTest::Allowed;

using Maker = Costs (*)(RandomEstimates&, int);

/// Problems with all pairs allowed that have a cost of their own.
struct Problems {
    explicit Problems(Maker make, int n) : costs(makeProblems(make, n)) {
        for (const Costs& cost : costs) {
            Allowed matrix;
            for (const auto& row : cost) {
                matrix.emplace_back();
                for (const double c : row) {
                    matrix.back().push_back(c != Veskar::forbiddenCost);
                }
            }
            allowed.push_back(matrix);
        }
    }

    int rows() const { return static_cast<int>(costs[0].size()); }
    int cols() const { return static_cast<int>(costs[0][0].size()); }

    std::vector<Costs> costs;
    std::vector<Allowed> allowed;
};

/// Empties the result list, which a solve appends to: an association starts with that.
void clear(Veskar::TrackAssociator& associator) {
    try {
        associator.systemToSystemAssociation({}, {});
    } catch (const std::out_of_range&) {  // as there are no tracks
    }
}

void solver(benchmark::State& state, Maker make) {
    Problems problems(make, static_cast<int>(state.range(0)));
    Veskar::Config config;
    config.module.useJVA = true;
    Veskar::TrackAssociator associator(config);
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (k == problems.costs.size()) {
            k = 0;
            clear(associator);
        }
        associator.runJVA(problems.rows(), problems.cols(), problems.costs[k], problems.allowed[k]);
        ++k;
    }
}

void reference(benchmark::State& state, Maker make) {
    const Problems problems(make, static_cast<int>(state.range(0)));
    ReferenceSolver peer;
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(peer.solve(problems.costs[k++ % problems.costs.size()]).data());
    }
}

void literal(benchmark::State& state, Maker make) {
    const Problems problems(make, static_cast<int>(state.range(0)));
    std::size_t k = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::size_t next = k++ % problems.costs.size();
        benchmark::DoNotOptimize(VeskarTest::runLiterally(
            problems.rows(), problems.cols(), problems.costs[next], problems.allowed[next]));
    }
}

template <int exponent>
Costs makePriceWar(RandomEstimates& random, int n) {
    return VeskarTest::makePriceWar(random, n, std::pow(10.0, -exponent));
}

/// 64 tracks, 448 reports, and the other way round: all in one gate.
Costs makeOneGate(RandomEstimates& random, int n) {
    return makeUniform(random, n, 512 - n);
}

bool registerAll() {
    const auto add = [](const std::string& name, auto measure, Maker make,
                        const std::vector<std::int64_t>& sizes) {
        benchmark::RegisterBenchmark(name.c_str(), measure, make)->ArgsProduct({sizes});
    };
    const std::vector<std::int64_t> all = {8, 16, 32, 64, 128, 256, 512};
    for (const ProblemFamily& family : tableFamilies) {
        add("solver/" + std::string(family.name), solver, family.make, all);
        add("reference/" + std::string(family.name), reference, family.make, all);
    }
    add("solver/oneGate", solver, makeOneGate, {64, 448});
    add("reference/oneGate", reference, makeOneGate, {64, 448});
    const std::vector<std::int64_t> small = {4, 8, 16, 32, 64};
    add("solver/priceWar4", solver, makePriceWar<4>, small);
    add("literal/priceWar4", literal, makePriceWar<4>, small);
    add("solver/priceWar12", solver, makePriceWar<12>, small);
    add("literal/priceWar12", literal, makePriceWar<12>, small);
    return true;
}

[[maybe_unused]] const bool registered = registerAll();

}  // namespace
