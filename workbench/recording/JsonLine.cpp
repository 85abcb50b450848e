// SPDX-License-Identifier: Apache-2.0
#include "recording/JsonLine.h"

#include "io/NumberText.h"

namespace Workbench {
namespace {

void appendName(std::string& text, std::string_view name) {
    text += ",\"";
    text += name;
    text += "\":";
}

}  // namespace

void appendMember(std::string& text, std::string_view name, double value, int decimals) {
    appendName(text, name);
    appendNumber(text, value, decimals);
}

void appendMember(std::string& text, std::string_view name, std::initializer_list<double> values,
                  int decimals) {
    appendName(text, name);
    text += '[';
    for (const double value : values) {
        text += text.back() == '[' ? "" : ",";
        appendNumber(text, value, decimals);
    }
    text += ']';
}

void appendMember(std::string& text, std::string_view name, const Eigen::Vector2d& value,
                  int decimals) {
    appendMember(text, name, {value[0], value[1]}, decimals);
}

void appendLabel(std::string& text, std::string_view name, const Label& label) {
    if (label.name == "unknown") {
        return;
    }
    appendName(text, name);
    appendQuoted(text, label.name);
    text += ",\"";
    text += name;
    text += "Probability\":";
    appendNumber(text, label.probability, ratioDecimals);
}

void appendLabels(std::string& text, const Labels& labels) {
    appendLabel(text, "class", labels.objectClass);
    appendLabel(text, "color", labels.color);
    appendLabel(text, "upperClothingColor", labels.upperClothingColor);
    appendLabel(text, "lowerClothingColor", labels.lowerClothingColor);
}

void appendBox(std::string& text, const ImageBox& box) {
    text += ",\"box\":{\"left\":";
    appendNumber(text, box.left, imageDecimals);
    appendMember(text, "bottom", box.bottom, imageDecimals);
    appendMember(text, "right", box.right, imageDecimals);
    appendMember(text, "top", box.top, imageDecimals);
    text += '}';
}

}  // namespace Workbench
