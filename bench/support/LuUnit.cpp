// SPDX-License-Identifier: Apache-2.0
#include "support/LuUnit.h"

#include "support/EstimatePool.h"

#include <cmath>

#include <Eigen/LU>
#include <benchmark/benchmark.h>

namespace VeskarBench {

double luUnit(const Veskar::StateVector& x1, const Veskar::StateMatrix& P1,
              const Veskar::StateVector& x2, const Veskar::StateMatrix& P2) {
    const Veskar::StateVector d = x1 - x2;
    const Veskar::StateMatrix S = P1 + P2;
    return std::sqrt(d.dot(S.partialPivLu().solve(d)));
}

namespace {

void lu(benchmark::State& state) {
    EstimatePool pool;
    for ([[maybe_unused]] auto _ : state) {
        const VeskarTest::Estimate& a = pool.next();
        const VeskarTest::Estimate& b = pool.next();
        benchmark::DoNotOptimize(luUnit(a.x, a.P, b.x, b.P));
    }
}

BENCHMARK(lu)->Name("LU");

}  // namespace
}  // namespace VeskarBench
