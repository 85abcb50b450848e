// SPDX-License-Identifier: Apache-2.0
#include "host/reports/JsonLine.h"

namespace Veskar::Host::Internal {
void appendVector(LineText& text, std::string_view name, const Eigen::Vector2d& value,
                  int decimals) {
    text.addMember(name, {value[0], value[1]}, decimals);
}

void appendLabel(LineText& text, std::string_view name, const Label& label) {
    if (label.name == "unknown") {
        return;
    }
    text.addName(name);
    text.addQuoted(label.name);
    text += ",\"";
    text += name;
    text += "Probability\":";
    text.addNumber(label.probability, ratioDecimals);
}

void appendLabels(LineText& text, const Labels& labels) {
    appendLabel(text, "class", labels.objectClass);
    appendLabel(text, "color", labels.color);
    appendLabel(text, "upperClothingColor", labels.upperClothingColor);
    appendLabel(text, "lowerClothingColor", labels.lowerClothingColor);
}

void appendBox(LineText& text, const ImageBox& box) {
    text += ",\"box\":{\"left\":";
    text.addNumber(box.left, imageDecimals);
    text.addMember("bottom", box.bottom, imageDecimals);
    text.addMember("right", box.right, imageDecimals);
    text.addMember("top", box.top, imageDecimals);
    text += '}';
}

}  // namespace Veskar::Host::Internal
