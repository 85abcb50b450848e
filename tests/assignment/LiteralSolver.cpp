// SPDX-License-Identifier: Apache-2.0
#include "assignment/LiteralSolver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace VeskarTest {

// Uses the textbook's names.
LiteralSolution solveLiterally(const Costs& input) {
    LiteralSolution solution;
    const int n = static_cast<int>(input.size());
    Costs C = input;
    for (auto& row : C) {
        for (double& c : row) {
            if (!std::isfinite(c)) {
                c = 9999.0;
            }
        }
    }
    const double big = std::numeric_limits<double>::max();
    std::vector<double> v(n);
    std::vector<int> rowsol(n, -1);
    std::vector<int> colsol(n, -1);
    std::vector<int> matches(n, 0);

    // Column reduction.
    for (int j = n - 1; j >= 0; j--) {
        double min = C.at(0).at(j);
        int imin = 0;
        for (int i = 1; i < n; i++) {
            if (C.at(i).at(j) < min) {
                min = C.at(i).at(j);
                imin = i;
            }
        }
        v.at(j) = min;
        matches.at(imin)++;
        if (matches.at(imin) == 1) {
            rowsol.at(imin) = j;
            colsol.at(j) = imin;
        } else {
            colsol.at(j) = -1;
        }
    }

    // Reduction transfer.
    std::vector<int> free;
    for (int i = 0; i < n; i++) {
        if (matches.at(i) == 0) {
            free.push_back(i);
        } else if (matches.at(i) == 1) {
            const int j1 = rowsol.at(i);
            double min = big;
            for (int j = 0; j < n; j++) {
                if (j != j1) {
                    if (C.at(i).at(j) - v.at(j) < min) {
                        min = C.at(i).at(j) - v.at(j);
                    }
                }
            }
            v.at(j1) = v.at(j1) - min;
        }
    }

    // Augmenting row reduction, twice.
    for (int pass = 0; pass < 2; pass++) {
        std::vector<int> list = free;
        free.clear();
        int k = 0;
        int steps = 0;
        while (k < static_cast<int>(list.size())) {
            const int i = list.at(k);
            k++;
            steps++;
            double umin = C.at(i).at(0) - v.at(0);
            int j1 = 0;
            double usubmin = big;
            int j2 = -1;
            for (int j = 1; j < n; j++) {
                const double h = C.at(i).at(j) - v.at(j);
                if (h < usubmin) {
                    if (h >= umin) {
                        usubmin = h;
                        j2 = j;
                    } else {
                        usubmin = umin;
                        j2 = j1;
                        umin = h;
                        j1 = j;
                    }
                }
            }
            int i0 = colsol.at(j1);
            bool lowered = false;
            if (umin < usubmin) {
                const double price = v.at(j1) - (usubmin - umin);
                if (i0 >= 0 && price == v.at(j1)) {
                    solution.endingRuleUsed = true;
                    j1 = j2;
                    i0 = colsol.at(j2);
                } else {
                    v.at(j1) = price;
                    lowered = true;
                }
            } else if (i0 >= 0) {
                j1 = j2;
                i0 = colsol.at(j2);
            }
            rowsol.at(i) = j1;
            colsol.at(j1) = i;
            if (i0 >= 0) {
                if (lowered && steps < 4 * n + 100) {
                    k--;
                    list.at(k) = i0;
                } else {
                    if (lowered) {
                        solution.endingRuleUsed = true;
                    }
                    free.push_back(i0);
                }
            }
        }
        solution.longestPass = std::max(solution.longestPass, steps);
    }

    // Augmentation.
    for (const int f : free) {
        std::vector<double> d(n);
        std::vector<int> pred(n);
        std::vector<int> collist(n);
        for (int j = 0; j < n; j++) {
            d.at(j) = C.at(f).at(j) - v.at(j);
            pred.at(j) = f;
            collist.at(j) = j;
        }
        int low = 0;
        int up = 0;
        int last = -1;
        double min = 0.0;
        int endofpath = -1;
        while (endofpath == -1) {
            if (low == up) {
                last = low - 1;
                min = d.at(collist.at(up));
                up++;
                for (int k = up; k < n; k++) {
                    const int j = collist.at(k);
                    const double h = d.at(j);
                    if (h <= min) {
                        if (h < min) {
                            up = low;
                            min = h;
                        }
                        collist.at(k) = collist.at(up);
                        collist.at(up) = j;
                        up++;
                    }
                }
                for (int k = low; k < up && endofpath == -1; k++) {
                    if (colsol.at(collist.at(k)) < 0) {
                        endofpath = collist.at(k);
                    }
                }
            } else {
                const int j1 = collist.at(low);
                low++;
                const int i = colsol.at(j1);
                const double h = C.at(i).at(j1) - v.at(j1) - min;
                for (int k = up; k < n && endofpath == -1; k++) {
                    const int j = collist.at(k);
                    const double w = C.at(i).at(j) - v.at(j) - h;
                    if (w < d.at(j)) {
                        pred.at(j) = i;
                        if (w == min) {
                            if (colsol.at(j) < 0) {
                                endofpath = j;
                            } else {
                                collist.at(k) = collist.at(up);
                                collist.at(up) = j;
                                up++;
                            }
                        }
                        d.at(j) = w;
                    }
                }
            }
        }
        for (int k = 0; k <= last; k++) {
            const int j = collist.at(k);
            v.at(j) = v.at(j) + d.at(j) - min;
        }
        int i = -1;
        while (i != f) {
            i = pred.at(endofpath);
            colsol.at(endofpath) = i;
            const int j1 = endofpath;
            endofpath = rowsol.at(i);
            rowsol.at(i) = j1;
        }
    }
    solution.columnOfRow = rowsol;
    return solution;
}

Pairs runLiterally(int rows, int cols, const Costs& cost, const Allowed& allowed) {
    const std::size_t n = std::max(cost.size(), cost.at(0).size());
    if (n > 512) {
        throw std::runtime_error("One of the JVA costMatrix dimensions was too big (>512)");
    }
    Costs C(n, std::vector<double>(n, 9999.0));
    for (int i = 0; i < rows; i++) {
        for (int j = 0; j < cols; j++) {
            C.at(i).at(j) = cost.at(i).at(j);
        }
    }
    const std::vector<int> rowsol = solveLiterally(C).columnOfRow;
    Pairs result;
    for (int i = 0; i < rows; i++) {
        const int j = rowsol.at(i);
        if (j < cols && allowed.at(i).at(j)) {
            result.emplace_back(i, j);
        }
    }
    return result;
}

}  // namespace VeskarTest
