// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/ElementFields.h"

#include <veskar-host/InputError.h>

#include "host/json/LineText.h"

#include <algorithm>

namespace Veskar::Live {
namespace {

using Host::InputError;
using Host::Internal::shortestText;

constexpr std::size_t longestText = 256;

std::string shown(const Scalar& value) {
    const std::string text = textOf(value);
    return text.empty() ? "nothing" : quotedShortly(text);
}

std::string shortText(const Scalar& value, const Host::Internal::JsonPath& place) {
    std::string text = textOf(value);
    if (text.size() > longestText) {
        throw InputError(place.text(),
                         "longer than " + std::to_string(longestText) + " characters");
    }
    return text;
}

}  // namespace

void ElementFields::refuse(std::string_view name, const std::string& what) const {
    throw InputError(Host::Internal::JsonPath{&path_, name, {}}.text(), what);
}

ElementTree::Index ElementFields::find(std::string_view name, bool isAttributeToo) const {
    ElementTree::Index found = ElementTree::none;
    for (auto i = element_.firstChild; i != ElementTree::none; i = tree_[i].next) {
        if (tree_[i].name == name && (isAttributeToo || !tree_[i].isAttribute)) {
            if (found != ElementTree::none) {
                refuse(name, "occurs twice");
            }
            found = i;
        }
    }
    return found;
}

bool ElementFields::has(std::string_view name) const {
    return find(name, true) != ElementTree::none;
}

std::optional<Scalar> ElementFields::value(std::string_view name) const {
    const ElementTree::Index found = find(name, true);
    return found == ElementTree::none ? std::nullopt : std::optional(tree_[found].value);
}

std::optional<double> ElementFields::optionalNumber(std::string_view name,
                                                    Host::Internal::Range allowed) const {
    const std::optional<Scalar> found = value(name);
    if (!found) {
        return std::nullopt;
    }
    const std::optional<double> number = numberIn(*found);
    if (!number) {
        refuse(name, "expected a number, found " + shown(*found));
    }
    if (!allowed.contains(*number)) {
        refuse(name, shortestText(*number) + " is not between " + shortestText(allowed.least) +
                         " and " + shortestText(allowed.most));
    }
    return number;
}

double ElementFields::number(std::string_view name) const {
    const std::optional<double> found = optionalNumber(name);
    if (!found) {
        refuse(name, "missing");
    }
    return *found;
}

std::string ElementFields::text(std::string_view name) const {
    const std::optional<Scalar> found = value(name);
    return found ? shortText(*found, {&path_, name, {}}) : "";
}

std::string ElementFields::ownText() const {
    return shortText(element_.value, path_);
}

void ElementFields::refuseText() const {
    const std::string text = textOf(element_.value);
    if (!text.empty()) {
        throw InputError(path_.text(), "expected elements, found " + quotedShortly(text));
    }
}

void ElementFields::leaveOutAllBut(std::initializer_list<std::string_view> used,
                                   LeftOut& leftOut) const {
    for (auto i = element_.firstChild; i != ElementTree::none; i = tree_[i].next) {
        const std::string_view name = tree_[i].name;
        if (std::find(used.begin(), used.end(), name) == used.end()) {
            leftOut.add(std::string(element_.name) + (element_.name.empty() ? "" : ".") +
                        std::string(name));
        }
    }
}

}  // namespace Veskar::Live
