// SPDX-License-Identifier: Apache-2.0
#include "assignment/SolverProblems.h"

#include "assignment/SparseCosts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace VeskarBench {
namespace {

constexpr double forbidden = Veskar::forbiddenCost;

/// @param cost the cost of one cell, by row and column
template <typename Cost>
Costs fill(int rows, int cols, Cost cost) {
    Costs costs(static_cast<std::size_t>(rows),
                std::vector<double>(static_cast<std::size_t>(cols)));
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            costs[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = cost(i, j);
        }
    }
    return costs;
}

/// One to three allowed cells per row, one of which is in a column of its own.
Costs makeGated(RandomEstimates& random, int n, double withoutPartner) {
    Costs costs = fill(n, n, [](int /*i*/, int /*j*/) { return forbidden; });
    std::size_t own = 0;
    for (auto& row : costs) {
        const std::size_t col = own++;
        if (random.uniform(0.0, 1.0) < withoutPartner) {
            continue;
        }
        row[col] = random.uniform(0.0, 4.0);
        for (int k = random.integer(0, 2); k > 0; --k) {
            row[static_cast<std::size_t>(random.integer(0, n - 1))] = random.uniform(0.0, 4.0);
        }
    }
    return costs;
}

Costs makeTied(RandomEstimates& random, int n) {
    return fill(n, n, [&](int /*i*/, int /*j*/) { return random.integer(0, 9); });
}

Costs makeClustered(RandomEstimates& random, int n) {
    constexpr int crowds = 10;
    const auto crowdOf = [n](int k) { return k * crowds / n; };
    return fill(n, n, [&](int i, int j) {
        return crowdOf(i) == crowdOf(j) ? random.uniform(0.0, 4.0) : forbidden;
    });
}

Costs makeEuclidean(RandomEstimates& random, int n) {
    struct Place {
        double x;
        double y;
    };
    const auto drawPlaces = [&] {
        std::vector<Place> places(static_cast<std::size_t>(n));
        std::generate(places.begin(), places.end(), [&] {
            const double x = random.uniform(0.0, 100.0);
            return Place{x, random.uniform(0.0, 100.0)};
        });
        return places;
    };
    const std::vector<Place> from = drawPlaces();
    const std::vector<Place> to = drawPlaces();
    return fill(n, n, [&](int i, int j) {
        const Place& a = from[static_cast<std::size_t>(i)];
        const Place& b = to[static_cast<std::size_t>(j)];
        return std::hypot(a.x - b.x, a.y - b.y);
    });
}

}  // namespace

Costs makeUniform(RandomEstimates& random, int rows, int cols) {
    return fill(rows, cols, [&](int /*i*/, int /*j*/) { return random.uniform(0.0, 100.0); });
}

Costs makeNearTied(RandomEstimates& random, int n, double step) {
    return fill(n, n, [&](int /*i*/, int /*j*/) {
        return random.uniform(0.0, 1.0) < 0.4 ? 1.0 + step * random.uniform(0.0, 1.0) : forbidden;
    });
}

std::vector<Costs> makeProblems(Costs (*make)(RandomEstimates&, int), int n) {
    RandomEstimates random(7);
    const int count = std::max(4, 4096 / n);
    std::vector<Costs> problems;
    problems.reserve(static_cast<std::size_t>(count));
    for (int k = 0; k < count; ++k) {
        problems.push_back(make(random, n));
    }
    return problems;
}

const std::array<ProblemFamily, 9> tableFamilies = {{
    {"uniform", [](RandomEstimates& random, int n) { return makeUniform(random, n, n); }},
    {"gated", [](RandomEstimates& random, int n) { return makeGated(random, n, 0.0); }},
    {"alone", [](RandomEstimates& random, int n) { return makeGated(random, n, 0.2); }},
    {"tied", makeTied},
    {"clustered", makeClustered},
    {"nearTied", [](RandomEstimates& random, int n) { return makeNearTied(random, n, 1e-8); }},
    {"tall", [](RandomEstimates& random, int n) { return makeUniform(random, n, n / 8); }},
    {"wide", [](RandomEstimates& random, int n) { return makeUniform(random, n / 8, n); }},
    {"euclidean", makeEuclidean},
}};

}  // namespace VeskarBench
