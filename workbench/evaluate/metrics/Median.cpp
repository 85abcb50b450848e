// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/Median.h"

#include "evaluate/metrics/Average.h"

#include <algorithm>
#include <cstring>

namespace Workbench {
namespace {

/// Numbers with the same sign, exponent and five bits of the mantissa share an interval. Numbers
/// that are not negative are ordered like their bits.
std::size_t intervalOf(float value) {
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return bits >> 18;
}

}  // namespace

void Median::count(float value) {
    const std::size_t interval = intervalOf(value);
    if (interval >= counts_.size()) {
        counts_.resize(interval + 1);
    }
    ++counts_[interval];
    ++size_;
}

void Median::beginAgain() {
    candidates_.clear();
    interval_ = 0;
    rank_ = size_ / 2;
    while (interval_ < counts_.size() && rank_ >= counts_[interval_]) {
        rank_ -= counts_[interval_++];
    }
}

void Median::countAgain(float value) {
    if (intervalOf(value) == interval_) {
        candidates_.push_back(value);
    }
}

double Median::result() const {
    if (candidates_.empty()) {
        return nothingToAverage;
    }
    std::vector<float> values = candidates_;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(rank_);
    std::nth_element(values.begin(), middle, values.end());
    return static_cast<double>(*middle);
}

}  // namespace Workbench
