// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/ElementTree.h"

#include <utility>

namespace Veskar::Live {

void ElementTree::clear() {
    constexpr std::size_t usualSize = 20'000;
    if (elements_.capacity() > usualSize) {
        std::vector<Element>().swap(elements_);
    }
    elements_.clear();
    elements_.emplace_back();
    texts_.clear();
}

ElementTree::Index ElementTree::add(Index parent, std::string_view name) {
    const auto index = static_cast<Index>(elements_.size());
    elements_.emplace_back().name = name;
    const Index last = std::exchange(elements_[parent].lastChild, index);
    (last == none ? elements_[parent].firstChild : elements_[last].next) = index;
    return index;
}

void ElementTree::addAttribute(Index parent, std::string_view name, Scalar value) {
    Element& attribute = elements_[add(parent, name)];
    attribute.value = value;
    attribute.isAttribute = true;
}

std::string_view ElementTree::keep(std::string text) {
    return texts_.emplace_back(std::move(text));
}

}  // namespace Veskar::Live
