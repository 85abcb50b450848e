// SPDX-License-Identifier: Apache-2.0
// The HTML page of `veskar report`, compiled into the program.
#pragma once

#include <string_view>

namespace Workbench {

/// The HTML document without the data; empty when this program was built without it.
extern const std::string_view reportPage;

/// Why the page is missing; empty when it is there.
extern const std::string_view reportPageMissing;

/// Placeholder of the data in the page.
constexpr std::string_view reportPageMark = "@veskar-report-data@";

}  // namespace Workbench
