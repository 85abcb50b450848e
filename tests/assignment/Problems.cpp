// SPDX-License-Identifier: Apache-2.0
#include "assignment/Problems.h"

#include <cmath>
#include <functional>
#include <limits>

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

using Draw = std::function<double()>;

/// @return draws the costs of one problem
Draw chooseCosts(RandomEstimates& random) {
    const int kind = random.integer(0, 7);
    if (kind == 0) {
        const int range = random.integer(1, 9);
        return [&random, range] { return random.integer(0, range); };
    }
    if (kind == 1) {
        const double step = std::pow(10.0, random.uniform(-13.0, -3.0));
        return [&random, step] { return 1.0 + step * random.uniform(0.0, 1.0); };
    }
    if (kind == 2) {
        return [&random] { return 0.25 * random.integer(-40, 40); };
    }
    if (kind == 3) {
        return [&random] { return random.uniform(9990.0, 10005.0); };
    }
    if (kind == 4) {
        const double others[] = {std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), forbidden};
        const double other = others[random.integer(0, 3)];
        return [&random, other] {
            return random.integer(0, 9) == 0 ? other : random.uniform(0.0, 5.0);
        };
    }
    const double range = std::pow(10.0, random.uniform(-2.0, 4.0));
    return [&random, range] { return random.uniform(0.0, range); };
}

/// @return whether each of a number of rows or columns has cells
std::vector<bool> chooseUsed(RandomEstimates& random, int count) {
    const double share = random.integer(0, 1) == 0 ? 1.0 : random.uniform(0.5, 1.0);
    std::vector<bool> used(count);
    for (int i = 0; i < count; ++i) {
        used[i] = random.uniform(0.0, 1.0) < share;
    }
    return used;
}

}  // namespace

Costs makeAny(RandomEstimates& random, int rows, int cols) {
    const Draw draw = chooseCosts(random);
    const std::vector<bool> usedRows = chooseUsed(random, rows);
    const std::vector<bool> usedCols = chooseUsed(random, cols);
    const double densities[] = {1.0, random.uniform(0.0, 1.0), random.uniform(0.0, 6.0) / cols};
    const double density = densities[random.integer(0, 2)];
    const int crowds = random.integer(0, 3) == 0 ? random.integer(2, 8) : 1;
    const bool partners = random.integer(0, 1) == 0;  // row i has column i
    Costs C(rows, std::vector<double>(cols, forbidden));
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < cols; ++j) {
            const bool near = i * crowds / rows == j * crowds / cols;
            const bool chosen = random.uniform(0.0, 1.0) < density || (partners && i == j);
            if (usedRows[i] && usedCols[j] && near && chosen) {
                C[i][j] = draw();
            }
        }
    }
    return C;
}

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
