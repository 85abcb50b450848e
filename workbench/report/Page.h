// SPDX-License-Identifier: Apache-2.0
// The page of `veskar report`, compiled in.
#pragma once

#include <string_view>

namespace Workbench {

/// The page, one HTML document with everything in it but the data; empty when this program was
/// built without it.
extern const std::string_view reportPage;

/// Why the page is missing; empty when it is there.
extern const std::string_view reportPageMissing;

/// Where in the page the data go.
constexpr std::string_view reportPageMark = "@veskar-report-data@";

}  // namespace Workbench
