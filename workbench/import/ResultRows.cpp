// SPDX-License-Identifier: Apache-2.0
#include "import/ResultRows.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/LineReader.h"
#include "io/Printable.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

// Plausibility limits, far beyond any sequence.
constexpr int mostFrames = 10'000'000;
constexpr double largestNumber = 1e9;

/// The cells of a line between commas or blanks, without the blanks around them.
std::vector<std::string_view> cellsOf(std::string_view line, bool hasCommas) {
    constexpr const char* blanks = " \t\r";
    std::vector<std::string_view> cells;
    while (true) {
        const std::size_t begin = std::min(line.find_first_not_of(blanks), line.size());
        line.remove_prefix(begin);
        if (line.empty() && !(hasCommas && !cells.empty())) {
            return cells;
        }
        const std::size_t end = std::min(line.find_first_of(hasCommas ? "," : blanks), line.size());
        std::string_view cell = line.substr(0, end);
        cell = cell.substr(0, cell.find_last_not_of(blanks) + 1);
        cells.push_back(cell);
        if (end == line.size()) {
            return cells;
        }
        line.remove_prefix(end + 1);
    }
}

double numberOf(std::string_view cell) {
    double value = 0.0;
    const std::string_view digits = cell.substr(!cell.empty() && cell.front() == '+' ? 1 : 0);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() ||
        !(std::abs(value) <= largestNumber)) {
        throw InputError(fmt::format("\"{}\" is no number in the range of this format",
                                     printable(std::string(cell))));
    }
    return value;
}

/// Some trackers write ids and frames as "6.0".
int integerOf(std::string_view cell) {
    const double value = numberOf(cell);
    if (value != std::floor(value)) {
        throw InputError(fmt::format("\"{}\" is no integer", printable(std::string(cell))));
    }
    return static_cast<int>(value);
}

int frameOf(std::string_view cell, int first) {
    const int frame = integerOf(cell) - first;
    if (frame < 0 || frame >= mostFrames) {
        throw InputError(fmt::format("frame {} is not between {} and {}",
                                     printable(std::string(cell)), first, mostFrames - 1 + first));
    }
    return frame;
}

/// Reads all lines that are not empty.
/// @param least number of columns
/// @param read a row from its cells; false when it is left out
template <typename Read>
std::vector<ResultRow> readRows(const std::string& path, bool hasCommas, std::size_t least,
                                Read read) {
    LineReader lines(path);
    std::vector<ResultRow> rows;
    std::set<std::pair<int, std::int32_t>> seen;
    for (std::string_view line; lines.next(line);) {
        const std::vector<std::string_view> cells = cellsOf(line, hasCommas);
        if (cells.empty()) {
            continue;
        }
        try {
            if (cells.size() < least) {
                throw InputError(
                    fmt::format("{} columns where {} are needed", cells.size(), least));
            }
            ResultRow row;
            row.line = lines.lineNumber();
            if (!read(cells, row)) {
                continue;
            }
            if (!seen.insert({row.frame, row.id}).second) {
                throw InputError(fmt::format("id {} occurs twice in frame {}", row.id,
                                             printable(std::string(cells.front()))));
            }
            rows.push_back(std::move(row));
        } catch (const InputError& fault) {
            throw InputError(lines.place(), fault);
        }
    }
    if (rows.empty()) {
        throw InputError(lines.name(), InputError("no results"));
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const ResultRow& a, const ResultRow& b) { return a.frame < b.frame; });
    return rows;
}

}  // namespace

std::vector<ResultRow> readMotResults(const std::string& path) {
    constexpr std::size_t withPlace = 10;
    constexpr int first = 1;
    constexpr double noPlace = -1.0;
    return readRows(path, true, 7, [&](const auto& cells, ResultRow& row) {
        row.frame = frameOf(cells[0], first);
        row.id = integerOf(cells[1]);
        const Eigen::Vector4d box(numberOf(cells[2]), numberOf(cells[3]), numberOf(cells[4]),
                                  numberOf(cells[5]));
        if (box[2] > 0.0 && box[3] > 0.0) {
            const Eigen::Vector2d corner = box.head<2>() - Eigen::Vector2d::Constant(first);
            row.box << corner, corner + box.tail<2>();
        }
        row.confidence = numberOf(cells[6]);
        if (cells.size() >= withPlace) {
            const Eigen::Vector3d place(numberOf(cells[7]), numberOf(cells[8]), numberOf(cells[9]));
            if (place != Eigen::Vector3d::Constant(noPlace)) {
                row.position = place.head<2>();
            }
        }
        return true;
    });
}

std::vector<ResultRow> readKittiResults(const std::string& path) {
    constexpr std::size_t columns = 17;
    return readRows(path, false, columns, [&](const auto& cells, ResultRow& row) {
        row.className = cells[2];
        if (row.className == "DontCare") {
            return false;
        }
        row.frame = frameOf(cells[0], 0);
        row.id = integerOf(cells[1]);
        const Eigen::Vector4d box(numberOf(cells[6]), numberOf(cells[7]), numberOf(cells[8]),
                                  numberOf(cells[9]));
        if (box[2] > box[0] && box[3] > box[1]) {
            row.box = box;
        }
        // The camera's x points right, its y down, its z forward.
        row.position = {numberOf(cells[15]), -numberOf(cells[13])};
        if (cells.size() > columns) {
            row.confidence = numberOf(cells[columns]);
        }
        return true;
    });
}

}  // namespace Workbench
