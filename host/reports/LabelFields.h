// SPDX-License-Identifier: Apache-2.0
// Class and colours, as recordings and fused tracks state them.
#pragma once

#include <veskar-host/Labels.h>

#include "host/json/Fields.h"

#include <string_view>

namespace Veskar::Host::Internal {

/// @param fields a track
/// @param name the member that holds the word; "unknown" when it is missing
/// @param probability the member that holds its probability; 0 when it is missing
/// @return the label
/// @throw InputError what is wrong
template <typename Value>
Label readLabel(const BasicFields<Value>& fields, std::string_view name,
                std::string_view probability) {
    return {fields.text(name, "unknown"), fields.numberWithin(probability, 0.0, 1.0, 0.0)};
}

/// @param fields a track
/// @return its class and colours
/// @throw InputError what is wrong
template <typename Value>
Labels readLabels(const BasicFields<Value>& fields) {
    return {readLabel(fields, "class", "classProbability"),
            readLabel(fields, "color", "colorProbability"),
            readLabel(fields, "upperClothingColor", "upperClothingColorProbability"),
            readLabel(fields, "lowerClothingColor", "lowerClothingColorProbability")};
}

}  // namespace Veskar::Host::Internal
