// SPDX-License-Identifier: Apache-2.0
// The HTML pages of the report, the live view and the calibration, compiled into the program.
#pragma once

#include <string_view>

namespace Workbench {

/// The HTML document without the data; empty when this program was built without it.
extern const std::string_view reportPage;

/// The HTML document of the live view; empty when this program was built without it.
extern const std::string_view livePage;

/// The HTML document of a calibration without the data; empty when this program was built without
/// it.
extern const std::string_view calibrationPage;

/// Why the pages are missing; empty when they are there.
extern const std::string_view reportPageMissing;

/// Placeholder of the data in the page.
constexpr std::string_view reportPageMark = "@veskar-report-data@";

/// Where the policy of the page names the sources of pictures; further ones are added behind it.
constexpr std::string_view reportPictureSources = "img-src data:";

}  // namespace Workbench
