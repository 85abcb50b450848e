// SPDX-License-Identifier: Apache-2.0
// How a table of a sensor is to be read; docs/formats.md describes the document.
#pragma once

#include "host/installation/RecordingHeader.h"
#include "recording/Recording.h"

#include <map>
#include <optional>
#include <string>

namespace Workbench {

/// A column of a table and its unit.
struct CsvColumn {
    std::string name;     ///< in the first line of the table
    double scale = 1.0;   ///< from the column's unit to that of recordings
    double offset = 0.0;  ///< added behind that
};

/// The table of one sensor.
struct CsvTable {
    char separator = ',';
    std::map<std::string, CsvColumn> columns;  ///< by what they are: "time", "range" and so on
    bool isFraction = false;                   ///< boxes in parts of the image, not in pixels

    bool has(const std::string& quantity) const { return columns.count(quantity) > 0; }
};

/// The recipe of an import.
struct CsvRecipe {
    RecordingHeader header;   ///< of the recording
    bool isUnixTime = false;  ///< times are UNIX times
    std::optional<CsvTable> radar;
    std::optional<CsvTable> video;
};

/// @param path a JSON document
/// @return the recipe
/// @throw InputError the fault of the document
CsvRecipe readCsvRecipe(const std::string& path);

}  // namespace Workbench
