// SPDX-License-Identifier: Apache-2.0
#include "report/Column.h"

#include "report/Resolution.h"

#include <algorithm>
#include <cmath>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

void appendVariableLength(std::string& bytes, std::uint64_t value) {
    while (value >= 0x80U) {
        bytes += static_cast<char>(value | 0x80U);
        value >>= 7U;
    }
    bytes += static_cast<char>(value);
}

/// Appends @p count zeros, run-length encoded.
void appendZeros(std::string& bytes, std::uint64_t count) {
    if (count > 0) {
        bytes += '\0';
        appendVariableLength(bytes, count - 1);
    }
}

}  // namespace

std::int32_t inSteps(double value, double step) {
    if (!std::isfinite(value)) {
        return missing;
    }
    constexpr double most = std::int32_t{1} << 28;
    return static_cast<std::int32_t>(std::nearbyint(std::clamp(value / step, -most, most)));
}

void Column::append(std::int32_t steps) {
    const std::int64_t difference = std::int64_t{steps} - last_;
    last_ = steps;
    if (difference == 0) {
        ++zeros_;
        return;
    }
    appendZeros(bytes_, zeros_);
    zeros_ = 0;
    const auto magnitude = static_cast<std::uint64_t>(std::abs(difference));
    appendVariableLength(bytes_, difference < 0 ? 2 * magnitude - 1 : 2 * magnitude);
}

Json Column::json() const {
    std::string all = bytes_;
    appendZeros(all, zeros_);
    return {{"step", step_}, {"data", base64(all)}};
}

Json timeColumn(const std::vector<double>& times, double start) {
    Column column(milliseconds);
    for (const double time : times) {
        column.add(time - start);
    }
    return column.json();
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::string_view group = bytes.substr(i, 3);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8U | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= group.size() ? digits[bits >> (18 - 6 * k) & 63U] : '=';
        }
    }
    return text;
}

}  // namespace Workbench
