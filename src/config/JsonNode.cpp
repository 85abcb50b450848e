// SPDX-License-Identifier: Apache-2.0
#include <veskar/JsonNode.h>

#include <stdexcept>
#include <utility>

#include <jansson.h>

namespace Veskar {

JsonNode::JsonNode(json_t* value, Ownership ownership)
    : json(value), borrowed(ownership == Ownership::Borrowed) {}

JsonNode::JsonNode(const JsonNode& other) : json(other.json), borrowed(other.borrowed) {
    if (!borrowed) {
        json_incref(json);
    }
}

JsonNode::JsonNode(JsonNode&& other) noexcept
    : json(std::exchange(other.json, nullptr)), borrowed(std::exchange(other.borrowed, false)) {}

JsonNode& JsonNode::operator=(const JsonNode& other) {
    return *this = JsonNode(other);
}

JsonNode& JsonNode::operator=(JsonNode&& other) noexcept {
    // The old value leaves with the temporary, so that assigning a node to itself keeps it.
    JsonNode taken(std::move(other));
    std::swap(json, taken.json);
    std::swap(borrowed, taken.borrowed);
    return *this;
}

JsonNode::~JsonNode() {
    if (!borrowed) {
        json_decref(json);
    }
}

JsonNode JsonNode::fromFile(const std::string& path) {
    json_error_t error;
    json_t* document = json_load_file(path.c_str(), 0, &error);
    if (document == nullptr) {
        throw std::runtime_error("Failed to load json from file: " + path +
                                 ", error=" + error.text);
    }
    return {document, Ownership::Owning};
}

JsonNode JsonNode::fromString(const std::string& text) {
    json_error_t error;
    json_t* document = json_loadb(text.data(), text.size(), 0, &error);
    if (document == nullptr) {
        throw std::runtime_error("Failed to load json from string: " + text +
                                 ", error=" + error.text);
    }
    return {document, Ownership::Owning};
}

JsonNode JsonNode::get(const std::string& key) const {
    json_t* member = json_object_get(json, key.c_str());
    if (member == nullptr) {
        throw std::runtime_error("No such key: " + key);
    }
    return {member, Ownership::Borrowed};
}

double JsonNode::asReal() const {
    if (!json_is_real(json)) {
        throw std::runtime_error("JsonNode is not a real number.");
    }
    return json_real_value(json);
}

int JsonNode::asInteger() const {
    if (!json_is_integer(json)) {
        throw std::runtime_error("JsonNode is not an integer.");
    }
    return static_cast<int>(json_integer_value(json));
}

bool JsonNode::asBoolean() const {
    if (!json_is_boolean(json)) {
        throw std::runtime_error("JsonNode is not a boolean.");
    }
    return json_is_true(json);
}

std::vector<JsonNode> JsonNode::asArray() const {
    if (!json_is_array(json)) {
        throw std::runtime_error("JsonNode is not an array");
    }
    const std::size_t size = json_array_size(json);
    std::vector<JsonNode> elements;
    elements.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        elements.push_back({json_array_get(json, i), Ownership::Borrowed});
    }
    return elements;
}

}  // namespace Veskar
