// SPDX-License-Identifier: Apache-2.0
// Element trees from and to XML.
#pragma once

#include "live/onvif/ElementTree.h"

#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace Veskar::Live {

/// Reads XML documents into element trees. Its memory is reused.
class XmlElements {
public:
    /// @param limits of a document
    explicit XmlElements(const TextLimits& limits) : limits_(limits) {}

    /// @param text an XML document in UTF-8 with any prefixes for ONVIF's namespaces
    /// @param tree receives its elements; borrows this object's memory until the next call
    /// @throw Host::InputError the fault
    void read(std::string_view text, ElementTree& tree);

private:
    struct Binding {
        std::string_view prefix;  ///< empty: for names without one
        bool isOnvif;
    };

    void fill(const pugi::xml_node& from, ElementTree::Index to, std::size_t depth);
    void addChild(const pugi::xml_node& child, ElementTree::Index parent, std::size_t depth);
    void addAttributes(const pugi::xml_node& from, ElementTree::Index to);
    void bind(const pugi::xml_node& element);
    bool isOnvif(std::string_view prefix) const;

    TextLimits limits_;
    std::string text_;
    pugi::xml_document document_;
    std::vector<Binding> bindings_;  ///< those in scope, innermost last
    ElementTree* tree_ = nullptr;    ///< during read
};

/// @param tree frames below its root
/// @return a document with them in a MetadataStream, without line breaks
std::string toXml(const ElementTree& tree);

}  // namespace Veskar::Live
