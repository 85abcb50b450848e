// SPDX-License-Identifier: Apache-2.0
#include "recording/LabelFields.h"

namespace Workbench {

Label readLabel(const LineFields& fields, std::string_view name, std::string_view probability) {
    return {fields.text(name, "unknown"), fields.numberWithin(probability, 0.0, 1.0, 0.0)};
}

Labels readLabels(const LineFields& fields) {
    return {readLabel(fields, "class", "classProbability"),
            readLabel(fields, "color", "colorProbability"),
            readLabel(fields, "upperClothingColor", "upperClothingColorProbability"),
            readLabel(fields, "lowerClothingColor", "lowerClothingColorProbability")};
}

}  // namespace Workbench
