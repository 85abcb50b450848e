// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/XmlElements.h"

#include <veskar-host/InputError.h>

#include "live/onvif/XmlGuard.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Veskar::Live {
namespace {

using Host::InputError;

constexpr std::string_view schemaNamespace = "http://www.onvif.org/ver10/schema";
constexpr std::string_view bodyNamespace = "http://www.onvif.org/ver20/analytics/humanbody";
constexpr std::array<std::string_view, 4> onvifNamespaces{
    schemaNamespace, bodyNamespace, "http://www.onvif.org/ver20/analytics/humanface",
    "http://www.onvif.org/ver20/analytics/radiometry"};
constexpr std::size_t mostBindings = 64;

struct QualifiedName {
    std::string_view prefix;
    std::string_view local;
};

QualifiedName split(std::string_view name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) {
        return {{}, name};
    }
    return {name.substr(0, colon), name.substr(colon + 1)};
}

/// The prefix that an attribute binds; nothing when it is no declaration of a namespace.
std::optional<std::string_view> boundPrefix(std::string_view attribute) {
    const QualifiedName name = split(attribute);
    if (name.prefix == "xmlns") {
        return name.local;
    }
    return attribute == "xmlns" ? std::optional<std::string_view>("") : std::nullopt;
}

std::string placeIn(std::string_view text, std::ptrdiff_t offset) {
    const std::string_view before =
        text.substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1;  // 0 without any
    return "line " + std::to_string(line) + ", column " +
           std::to_string(before.size() - lineStart + 1);
}

/// Character data that stands in several pieces, around comments or in CDATA sections, is joined.
std::string_view textIn(const pugi::xml_node& element, ElementTree& tree) {
    std::string_view first;
    std::string joined;
    for (const pugi::xml_node piece : element.children()) {
        if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata) {
            if (first.empty()) {
                first = piece.value();
            } else {
                joined += joined.empty() ? first : "";
                joined += piece.value();
            }
        }
    }
    return trimmed(joined.empty() ? first : tree.keep(std::move(joined)));
}

}  // namespace

void XmlElements::read(std::string_view text, ElementTree& tree) {
    refuseHostileXml(text, limits_);
    tree.clear();
    tree_ = &tree;
    bindings_.clear();
    if (text_.capacity() > keptMemory) {
        std::string().swap(text_);
    }
    text_ = text;
    const pugi::xml_parse_result result = document_.load_buffer_inplace(
        text_.data(), text_.size(), pugi::parse_default & ~pugi::parse_eol, pugi::encoding_utf8);
    if (!result) {
        throw InputError(placeIn(text, result.offset) + ": " + result.description());
    }
    const pugi::xml_node first = document_.document_element();
    if (first != document_.last_child()) {
        throw InputError("text behind the document's element");
    }
    addChild(first, ElementTree::root(), 0);
    if (tree[tree[ElementTree::root()].firstChild].name != "MetadataStream") {
        throw InputError("expected the element MetadataStream of " + std::string(schemaNamespace));
    }
}

void XmlElements::fill(const pugi::xml_node& from, ElementTree::Index to, std::size_t depth) {
    if (depth > limits_.depth) {
        throw InputError("nested deeper than " + std::to_string(limits_.depth) + " levels");
    }
    addAttributes(from, to);
    (*tree_)[to].value = textIn(from, *tree_);
    for (const pugi::xml_node child : from.children()) {
        if (child.type() == pugi::node_element) {
            addChild(child, to, depth);
        }
    }
}

void XmlElements::addChild(const pugi::xml_node& child, ElementTree::Index parent,
                           std::size_t depth) {
    const std::size_t outer = bindings_.size();
    bind(child);
    const QualifiedName name = split(child.name());
    if (isOnvif(name.prefix)) {
        fill(child, tree_->add(parent, name.local), depth + 1);
    } else {
        const bool isMarked = !name.prefix.empty();
        tree_->add(parent, isMarked ? std::string_view(child.name())
                                    : tree_->keep(":" + std::string(name.local)));
    }
    bindings_.resize(outer);
}

void XmlElements::addAttributes(const pugi::xml_node& from, ElementTree::Index to) {
    for (const pugi::xml_attribute attribute : from.attributes()) {
        const std::string_view whole = attribute.name();
        if (boundPrefix(whole)) {
            continue;
        }
        const QualifiedName name = split(whole);
        const bool isOwn = name.prefix.empty() || isOnvif(name.prefix);
        tree_->addAttribute(to, isOwn ? name.local : whole, std::string_view(attribute.value()));
    }
}

void XmlElements::bind(const pugi::xml_node& element) {
    for (const pugi::xml_attribute attribute : element.attributes()) {
        if (const auto prefix = boundPrefix(attribute.name())) {
            const bool isOnvif =
                std::find(onvifNamespaces.begin(), onvifNamespaces.end(),
                          std::string_view(attribute.value())) != onvifNamespaces.end();
            bindings_.push_back({*prefix, isOnvif});
        }
    }
    if (bindings_.size() > mostBindings) {
        throw InputError("more than " + std::to_string(mostBindings) +
                         " declarations of namespaces");
    }
}

bool XmlElements::isOnvif(std::string_view prefix) const {
    const auto binding = std::find_if(bindings_.rbegin(), bindings_.rend(),
                                      [&](const Binding& one) { return one.prefix == prefix; });
    if (binding != bindings_.rend()) {
        return binding->isOnvif;
    }
    if (!prefix.empty() && prefix != "xml") {
        throw InputError("undeclared prefix " + quotedShortly(prefix));
    }
    return false;
}

namespace {

/// Writes a tree as XML text.
class XmlWriter {
public:
    explicit XmlWriter(const ElementTree& tree) : tree_(tree) {}

    std::string document() {
        text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><tt:MetadataStream xmlns:tt=\"";
        text_ += schemaNamespace;
        text_ += '"';
        if (hasBodies()) {
            text_ += " xmlns:bd=\"";
            text_ += bodyNamespace;
            text_ += '"';
        }
        text_ += "><tt:VideoAnalytics>";
        for (auto i = tree_[ElementTree::root()].firstChild; i != ElementTree::none;
             i = tree_[i].next) {
            element(tree_[i]);
        }
        text_ += "</tt:VideoAnalytics></tt:MetadataStream>";
        return std::move(text_);
    }

private:
    bool hasBodies() const {
        for (ElementTree::Index i = 0; i < tree_.size(); ++i) {
            if (tree_[i].space == Namespace::HumanBody) {
                return true;
            }
        }
        return false;
    }

    void element(const ElementTree::Element& element) {
        const std::string name =
            (element.space == Namespace::HumanBody ? "bd:" : "tt:") + std::string(element.name);
        text_ += '<' + name;
        auto child = element.firstChild;
        for (; child != ElementTree::none && tree_[child].isAttribute; child = tree_[child].next) {
            text_ += ' ';
            text_ += tree_[child].name;
            text_ += "=\"";
            escaped(textOf(tree_[child].value));
            text_ += '"';
        }
        const std::string value = textOf(element.value);
        if (child == ElementTree::none && value.empty()) {
            text_ += "/>";
            return;
        }
        text_ += '>';
        escaped(value);
        for (; child != ElementTree::none; child = tree_[child].next) {
            this->element(tree_[child]);
        }
        text_ += "</" + name + '>';
    }

    void escaped(std::string_view text) {
        for (const char character : text) {
            switch (character) {
                case '&':
                    text_ += "&amp;";
                    break;
                case '<':
                    text_ += "&lt;";
                    break;
                case '>':
                    text_ += "&gt;";
                    break;
                case '"':
                    text_ += "&quot;";
                    break;
                default:
                    // XML has no way to write control characters.
                    text_ += static_cast<unsigned char>(character) < 0x20U ? ' ' : character;
            }
        }
    }

    const ElementTree& tree_;
    std::string text_;
};

}  // namespace

std::string toXml(const ElementTree& tree) {
    return XmlWriter(tree).document();
}

}  // namespace Veskar::Live
