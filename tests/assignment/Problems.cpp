// SPDX-License-Identifier: Apache-2.0
#include "assignment/Problems.h"

namespace VeskarTest {
namespace {

constexpr double forbidden = 9999.0;

template <typename Cost>
Costs fill(int n, Cost cost) {
    Costs C(n, std::vector<double>(n));
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            C[i][j] = cost(i, j);
        }
    }
    return C;
}

}  // namespace

Costs makeGated(RandomEstimates& random, int n, double density) {
    return fill(n, [&](int /*i*/, int /*j*/) {
        return random.uniform(0.0, 1.0) < density ? random.uniform(0.0, 5.0) : forbidden;
    });
}

Costs makePriceWar(RandomEstimates& random, int n, double step) {
    Costs C = fill(n, [](int /*i*/, int /*j*/) { return forbidden; });
    C[0][0] = 1.0;
    C[0][n - 1] = 2.0;
    for (int i = 1; i < n; ++i) {
        for (int j = 1; j < n - 1; ++j) {
            C[i][j] = 1.0 + step * random.uniform(0.0, 1.0);
        }
    }
    return C;
}

const std::array<Family, 12> families = {{
    {"Uniform",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) { return random.uniform(0.0, 100.0); });
     }},
    {"TiedIntegers",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) { return 1.0 * random.integer(0, 9); });
     }},
    {"ZerosAndOnes",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) { return 1.0 * random.integer(0, 1); });
     }},
    {"Constant", [](RandomEstimates& /*random*/,
                    int n) { return fill(n, [](int /*i*/, int /*j*/) { return 7.0; }); }},
    {"AllForbidden", [](RandomEstimates& /*random*/,
                        int n) { return fill(n, [](int /*i*/, int /*j*/) { return forbidden; }); }},
    {"Products", [](RandomEstimates& /*random*/,
                    int n) { return fill(n, [](int i, int j) { return (i + 1.0) * (j + 1.0); }); }},
    {"Gated", [](RandomEstimates& random, int n) { return makeGated(random, n, 0.2); }},
    {"GatedTied",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) {
             return random.integer(0, 9) < 3 ? 1.0 * random.integer(0, 3) : forbidden;
         });
     }},
    {"ForbiddenRowsAndColumns",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int i, int j) {
             return i % 3 == 0 || j % 4 == 1 ? forbidden : random.uniform(0.0, 5.0);
         });
     }},
    {"Rectangular",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int j) {
             return j < n / 2 + 1 ? random.uniform(0.0, 5.0) : forbidden;
         });
     }},
    {"Negative",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) { return random.uniform(-50.0, 50.0); });
     }},
    {"AroundForbidden",
     [](RandomEstimates& random, int n) {
         return fill(n, [&](int /*i*/, int /*j*/) { return random.uniform(9000.0, 11000.0); });
     }},
}};

}  // namespace VeskarTest
