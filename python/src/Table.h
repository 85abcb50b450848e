// SPDX-License-Identifier: Apache-2.0
// Rows that become NumPy arrays, one per column.
#pragma once

#include "Bindings.h"

#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>

namespace Bindings {

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// @return a dictionary entry's array, without a copy of the values
py::array toArray(std::vector<double> values);
/// As above.
py::array toArray(std::vector<std::int64_t> values);

/// Words by number, each kept once: what pandas calls categories.
class WordColumn {
public:
    void add(const std::string& word);
    /// @return (codes, words)
    py::tuple take();

private:
    std::vector<std::int64_t> codes_;
    std::vector<std::string> words_;
    std::unordered_map<std::string, std::int64_t> places_;
};

/// Rows of some integers, reals and words each; NaN stands for an unknown real.
template <std::size_t Integers, std::size_t Reals, std::size_t Words>
class Table {
public:
    Table(std::array<const char*, Integers> integers, std::array<const char*, Reals> reals,
          std::array<const char*, Words> words)
        : integerNames_(integers), realNames_(reals), wordNames_(words) {}

    void add(const std::array<std::int64_t, Integers>& integers,
             const std::array<double, Reals>& reals,
             const std::array<const std::string*, Words>& words) {
        for (std::size_t i = 0; i < Integers; ++i) {
            integers_[i].push_back(integers[i]);
        }
        for (std::size_t i = 0; i < Reals; ++i) {
            reals_[i].push_back(reals[i]);
        }
        for (std::size_t i = 0; i < Words; ++i) {
            words_[i].add(*words[i]);
        }
    }

    std::size_t rows() const { return integers_[0].size(); }

    /// Empties the table; called with the interpreter lock.
    /// @return {name: array, or (codes, words)}
    py::dict take() {
        py::dict columns;
        for (std::size_t i = 0; i < Integers; ++i) {
            columns[integerNames_[i]] = toArray(std::exchange(integers_[i], {}));
        }
        for (std::size_t i = 0; i < Words; ++i) {
            columns[wordNames_[i]] = words_[i].take();
        }
        for (std::size_t i = 0; i < Reals; ++i) {
            columns[realNames_[i]] = toArray(std::exchange(reals_[i], {}));
        }
        return columns;
    }

private:
    std::array<const char*, Integers> integerNames_;
    std::array<const char*, Reals> realNames_;
    std::array<const char*, Words> wordNames_;
    std::array<std::vector<std::int64_t>, Integers> integers_;
    std::array<std::vector<double>, Reals> reals_;
    std::array<WordColumn, Words> words_;
};

}  // namespace Bindings
