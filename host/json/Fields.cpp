// SPDX-License-Identifier: Apache-2.0
#include "host/json/Fields.h"

namespace Veskar::Host::Internal {
namespace {

std::string_view nameOf(JsonKind kind) {
    switch (kind) {
        case JsonKind::Null:
            return "null";
        case JsonKind::Object:
            return "an object";
        case JsonKind::Array:
            return "an array";
        case JsonKind::String:
            return "a string";
        case JsonKind::Boolean:
            return "true or false";
        default:
            return "a number";
    }
}

}  // namespace

std::string JsonPath::text() const {
    if (enclosing == nullptr) {
        return std::string(name);
    }
    std::string whole = enclosing->text();
    whole += whole.empty() ? "" : ".";
    whole += name;
    if (item) {
        whole += "[" + std::to_string(*item) + "]";
    }
    return whole;
}

std::string expected(std::string_view wanted, JsonKind found) {
    std::string complaint = "expected ";
    complaint += wanted;
    complaint += ", found ";
    complaint += nameOf(found);
    return complaint;
}

}  // namespace Veskar::Host::Internal
