// SPDX-License-Identifier: Apache-2.0
// Reads the rows of comma-separated values (RFC 4180) by the names of their columns.
#pragma once

#include "io/LineReader.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// The rows of a table whose first line has the names of the columns.
class CsvRows {
public:
    /// @param path the file, or "-"
    /// @param separator of cells
    /// @throw InputError when there is no first line, or a name occurs twice in it
    CsvRows(const std::string& path, char separator);

    /// @param column a name
    /// @return its place in a row
    /// @throw InputError when there is no such column
    std::size_t placeOf(const std::string& column) const;
    /// Reads the next row that is not empty.
    /// @return false at the end
    /// @throw InputError when it has not as many cells as the first line, or a quote is not closed
    bool next();
    /// @param place of a column
    /// @return the text of the cell
    const std::string& text(std::size_t place) const { return cells_[place]; }
    /// @param place of a column
    /// @return the number; nothing when the cell is empty
    /// @throw InputError when it is no finite number
    std::optional<double> number(std::size_t place) const;
    /// @return "NAME:LINE" of the row
    std::string place() const { return lines_.place(); }

private:
    void split(std::string_view line);

    LineReader lines_;
    char separator_;
    std::map<std::string, std::size_t> columns_;
    std::vector<std::string> cells_;
};

}  // namespace Workbench
