// SPDX-License-Identifier: Apache-2.0
#include "import/CsvRows.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/Printable.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

namespace Workbench {

CsvRows::CsvRows(const std::string& path, char separator) : lines_(path), separator_(separator) {
    std::string_view line;
    if (!lines_.next(line)) {
        throw InputError(lines_.name(), InputError("no line with the names of the columns"));
    }
    constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
    if (line.substr(0, byteOrderMark.size()) == byteOrderMark) {
        line.remove_prefix(byteOrderMark.size());
    }
    split(line);
    for (std::size_t i = 0; i < cells_.size(); ++i) {
        if (!columns_.try_emplace(cells_[i], i).second) {
            throw InputError(
                lines_.place(),
                InputError(fmt::format("the column \"{}\" occurs twice", printable(cells_[i]))));
        }
    }
}

std::size_t CsvRows::placeOf(const std::string& column) const {
    const auto found = columns_.find(column);
    if (found == columns_.end()) {
        throw InputError(lines_.name(),
                         InputError(fmt::format("no column \"{}\"", printable(column))));
    }
    return found->second;
}

bool CsvRows::next() {
    std::string_view line;
    while (lines_.next(line)) {
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
            continue;
        }
        split(line);
        if (cells_.size() != columns_.size()) {
            throw InputError(lines_.place(),
                             InputError(fmt::format("{} cells where the first line has {}",
                                                    cells_.size(), columns_.size())));
        }
        return true;
    }
    return false;
}

void CsvRows::split(std::string_view line) {
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    cells_.assign(1, "");
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char character = line[i];
        if (character == '"') {
            const bool isDoubled = isQuoted && i + 1 < line.size() && line[i + 1] == '"';
            if (isDoubled) {
                cells_.back() += character;
                ++i;
            } else {
                isQuoted = !isQuoted;
            }
        } else if (character == separator_ && !isQuoted) {
            cells_.emplace_back();
        } else {
            cells_.back() += character;
        }
    }
    if (isQuoted) {
        throw InputError(lines_.place(), InputError("a quote is not closed"));
    }
    for (std::string& cell : cells_) {
        cell.erase(cell.find_last_not_of(" \t") + 1);
        cell.erase(0, cell.find_first_not_of(" \t"));
    }
}

std::optional<double> CsvRows::number(std::size_t place) const {
    const std::string& cell = cells_[place];
    if (cell.empty()) {
        return std::nullopt;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
    if (error != std::errc() || end != cell.data() + cell.size() || !std::isfinite(value)) {
        throw InputError(lines_.place(),
                         InputError(fmt::format("\"{}\" is no number", printable(cell))));
    }
    return value;
}

}  // namespace Workbench
