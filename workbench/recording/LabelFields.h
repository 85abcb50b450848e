// SPDX-License-Identifier: Apache-2.0
// Class and colours, as recordings and fused tracks state them.
#pragma once

#include "io/LineValue.h"
#include "recording/Recording.h"

#include <string_view>

namespace Workbench {

/// @param fields a track
/// @param name the member that holds the word; "unknown" when it is missing
/// @param probability the member that holds its probability; 0 when it is missing
/// @return the label
/// @throw InputError what is wrong
Label readLabel(const LineFields& fields, std::string_view name, std::string_view probability);

/// @param fields a track
/// @return its class and colours
/// @throw InputError what is wrong
Labels readLabels(const LineFields& fields);

}  // namespace Workbench
