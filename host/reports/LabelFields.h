// SPDX-License-Identifier: Apache-2.0
// Reads class and colours of recordings and fused tracks.
#pragma once

#include <veskar-host/Labels.h>

#include "host/json/Fields.h"

#include <string_view>

namespace Veskar::Host::Internal {

/// @param fields members of a track
/// @param name the member with the label; "unknown" when it is missing
/// @param probability the member with its probability; 0 when it is missing
/// @return the label
/// @throw InputError the fault
template <typename Value>
Label readLabel(const BasicFields<Value>& fields, std::string_view name,
                std::string_view probability) {
    return {fields.text(name, "unknown"), fields.numberWithin(probability, 0.0, 1.0, 0.0)};
}

/// @param fields members of a track
/// @return its class and colours
/// @throw InputError the fault
template <typename Value>
Labels readLabels(const BasicFields<Value>& fields) {
    return {readLabel(fields, "class", "classProbability"),
            readLabel(fields, "color", "colorProbability"),
            readLabel(fields, "upperClothingColor", "upperClothingColorProbability"),
            readLabel(fields, "lowerClothingColor", "lowerClothingColorProbability")};
}

}  // namespace Veskar::Host::Internal
