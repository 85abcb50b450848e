// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/JsonElements.h"

#include <veskar-host/InputError.h>

#include "host/json/LineText.h"

#include <algorithm>

namespace Veskar::Live {
namespace {

using Host::InputError;
using Host::Internal::LineText;
using simdjson::dom::element_type;

void refuse(simdjson::error_code fault) {
    if (fault != simdjson::SUCCESS) {
        throw InputError(simdjson::error_message(fault));
    }
}

void refuseManyValues(std::string_view text, std::size_t most) {
    if (text.size() <= most) {
        return;  // each has a mark of its own
    }
    const auto values = std::count_if(text.begin(), text.end(), [](char mark) {
        return mark == ',' || mark == '{' || mark == '[';
    });
    if (static_cast<std::size_t>(values) > most) {
        throw InputError("more than " + std::to_string(most) + " values");
    }
}

}  // namespace

void JsonElements::read(std::string_view text, ElementTree& tree) {
    if (text.size() > limits_.bytes) {
        throw InputError("larger than " + std::to_string(limits_.bytes) + " bytes");
    }
    if (text.empty()) {
        refuse(simdjson::EMPTY);  // whose text may have no address
    }
    refuseManyValues(text, limits_.elements);
    tree.clear();
    tree_ = &tree;
    if (parser_.capacity() > keptMemory) {
        parser_ = simdjson::dom::parser();
    }
    if (parser_.capacity() < text.size() || parser_.capacity() == 0) {
        refuse(parser_.allocate(std::max(text.size(), keptMemory), limits_.depth));
    }
    simdjson::dom::element document;
    refuse(parser_.parse(text.data(), text.size()).get(document));
    simdjson::dom::object object;
    if (document.get(object) != simdjson::SUCCESS) {
        throw InputError("expected an object");
    }
    fill(object, ElementTree::root());
}

void JsonElements::fill(simdjson::dom::object from, ElementTree::Index to) {
    for (const auto& [name, value] : from) {
        if (name == "@context") {
            continue;  // the namespaces of what is foreign
        }
        if (name == "#text") {
            (*tree_)[to].value = scalarOf(value, name);
        } else if (!name.empty() && name[0] == '@') {
            tree_->addAttribute(to, name.substr(1), scalarOf(value, name));
        } else if (value.is<simdjson::dom::array>()) {
            for (const simdjson::dom::element item : simdjson::dom::array(value)) {
                add(item, to, name);
            }
        } else {
            add(value, to, name);
        }
    }
}

void JsonElements::add(simdjson::dom::element value, ElementTree::Index parent,
                       std::string_view name) {
    const ElementTree::Index child = tree_->add(parent, name);
    if (isForeign(name)) {
        return;
    }
    simdjson::dom::object object;
    if (value.get(object) == simdjson::SUCCESS) {
        fill(object, child);
    } else {
        (*tree_)[child].value = scalarOf(value, name);
    }
}

Scalar JsonElements::scalarOf(simdjson::dom::element value, std::string_view name) {
    switch (value.type()) {
        case element_type::STRING:
            return trimmed(value.get_string().value_unsafe());
        case element_type::INT64:
            return value.get_int64().value_unsafe();
        case element_type::UINT64:
            return tree_->keep(std::to_string(value.get_uint64().value_unsafe()));
        case element_type::DOUBLE:
            return value.get_double().value_unsafe();
        case element_type::BOOL:
            return value.get_bool().value_unsafe();
        case element_type::NULL_VALUE:
            return {};
        case element_type::OBJECT:
            throw InputError(quotedShortly(name), "expected a value, found an object");
        default:
            throw InputError(quotedShortly(name), "expected a value, found an array");
    }
}

namespace {

/// Writes a tree as JSON text.
class JsonWriter {
public:
    explicit JsonWriter(const ElementTree& tree) : tree_(tree) {}

    std::string document() {
        object(tree_[ElementTree::root()]);
        return text_.string();
    }

private:
    void object(const ElementTree::Element& element) {
        text_ += '{';
        bool isFirst = true;
        const auto name = [&](const char* mark, std::string_view word) {
            text_ += isFirst ? "\"" : ",\"";
            text_ += mark;
            text_ += word;
            text_ += "\":";
            isFirst = false;
        };
        auto child = element.firstChild;
        for (; child != ElementTree::none && tree_[child].isAttribute; child = tree_[child].next) {
            name("@", tree_[child].name);
            scalar(tree_[child].value);
        }
        if (!std::holds_alternative<std::monostate>(element.value)) {
            name("#", "text");
            scalar(element.value);
        }
        while (child != ElementTree::none) {
            name("", tree_[child].name);
            child = list(child);
        }
        text_ += '}';
    }

    /// Writes elements of one name that stand together.
    /// @return the first one of another name
    ElementTree::Index list(ElementTree::Index first) {
        const std::string_view name = tree_[first].name;
        const auto isOfName = [&](ElementTree::Index index) {
            return index != ElementTree::none && tree_[index].name == name;
        };
        const bool isArray = tree_[first].isListed || isOfName(tree_[first].next);
        text_ += isArray ? "[" : "";
        ElementTree::Index i = first;
        for (; isOfName(i); i = tree_[i].next) {
            text_ += i == first ? "" : ",";
            value(tree_[i]);
        }
        text_ += isArray ? "]" : "";
        return i;
    }

    void value(const ElementTree::Element& element) {
        if (element.firstChild == ElementTree::none) {
            scalar(element.value);
        } else {
            object(element);
        }
    }

    void scalar(const Scalar& value) {
        if (const auto* words = std::get_if<std::string_view>(&value)) {
            text_.addQuoted(*words);
        } else if (const auto* real = std::get_if<Real>(&value)) {
            text_.addNumber(real->value, real->decimals);
        } else if (std::holds_alternative<std::monostate>(value)) {
            text_ += "null";
        } else {
            text_ += textOf(value);
        }
    }

    const ElementTree& tree_;
    LineText text_;
};

}  // namespace

std::string toJson(const ElementTree& tree) {
    return JsonWriter(tree).document();
}

}  // namespace Veskar::Live
