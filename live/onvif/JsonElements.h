// SPDX-License-Identifier: Apache-2.0
// Element trees from and to ONVIF's JSON.
#pragma once

#include "live/onvif/ElementTree.h"

#include <string>
#include <string_view>

#include <simdjson.h>

namespace Veskar::Live {

/// Reads JSON documents into element trees, by ONVIF's rules for writing its XML as JSON: "@name"
/// is an attribute, "#text" the value of an element that also has attributes, an array a repeated
/// element, null an empty one. Numbers and truth values may have quotes. Its memory is reused.
class JsonElements {
public:
    /// @param limits of a document
    explicit JsonElements(const TextLimits& limits) : limits_(limits) {}

    /// @param text a JSON document
    /// @param tree receives its elements; borrows this object's memory until the next call
    /// @throw Host::InputError the fault
    void read(std::string_view text, ElementTree& tree);

private:
    void fill(simdjson::dom::object from, ElementTree::Index to);
    void add(simdjson::dom::element value, ElementTree::Index parent, std::string_view name);
    Scalar scalarOf(simdjson::dom::element value, std::string_view name);

    TextLimits limits_;
    simdjson::dom::parser parser_;
    ElementTree* tree_ = nullptr;  ///< during read
};

/// @param tree frames below its root
/// @return an object with them, on one line and without line end
std::string toJson(const ElementTree& tree);

}  // namespace Veskar::Live
