// SPDX-License-Identifier: Apache-2.0
#include "io/CsvCells.h"

#include <cmath>

namespace Workbench {

void addCell(LineText& row, double value, int decimals) {
    row += ',';
    if (std::isfinite(value)) {
        row.addNumber(value, decimals);
    }
}

void addCell(LineText& row, const std::optional<double>& value, int decimals) {
    addCell(row, value.value_or(std::nan("")), decimals);
}

void addCell(LineText& row, std::string_view text) {
    row += ',';
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
        row += text;
        return;
    }
    row += '"';
    for (const char c : text) {
        row += c;
        if (c == '"') {
            row += '"';
        }
    }
    row += '"';
}

}  // namespace Workbench
