// SPDX-License-Identifier: Apache-2.0
// Imports tables of a radar and a camera by a recipe.
#pragma once

#include "import/ImportedRecording.h"

#include <string>

namespace Workbench {

/// Files of an import.
struct CsvOptions {
    std::string recipe;  ///< see CsvRecipe.h
    std::string radar;   ///< table of the radar; empty: none
    std::string video;   ///< table of the camera; empty: none
};

/// Rows of one time are a frame; a row without range or box is a frame without tracks. What has no
/// ids is tracked by the trackers of the simulated sensors; the header says so.
///
/// @param options what to import
/// @return the recording
/// @throw InputError the fault of an input
ImportedRecording importCsv(const CsvOptions& options);

}  // namespace Workbench
