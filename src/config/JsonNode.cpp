// SPDX-License-Identifier: Apache-2.0
#include <veskar/JsonNode.h>

#include <stdexcept>
#include <utility>

#include <jansson.h>

namespace Veskar {

JsonNode::JsonNode(json_t* value, Ownership ownership)
    : json_(value), borrowed_(ownership == Ownership::Borrowed) {}

JsonNode::JsonNode(const JsonNode& other) : json_(other.json_), borrowed_(other.borrowed_) {
    if (!borrowed_) {
        json_incref(json_);
    }
}

JsonNode::JsonNode(JsonNode&& other) noexcept
    : json_(std::exchange(other.json_, nullptr)),
      borrowed_(std::exchange(other.borrowed_, false)) {}

JsonNode& JsonNode::operator=(const JsonNode& other) {
    return *this = JsonNode(other);
}

JsonNode& JsonNode::operator=(JsonNode&& other) noexcept {
    // The old value leaves with the temporary, so that assigning a node to itself keeps it.
    JsonNode taken(std::move(other));
    std::swap(json_, taken.json_);
    std::swap(borrowed_, taken.borrowed_);
    return *this;
}

JsonNode::~JsonNode() {
    if (!borrowed_) {
        json_decref(json_);
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
    json_t* member = json_object_get(json_, key.c_str());
    if (member == nullptr) {
        throw std::runtime_error("No such key: " + key);
    }
    return {member, Ownership::Borrowed};
}

double JsonNode::asReal() const {
    if (!json_is_real(json_)) {
        throw std::runtime_error("JsonNode is not a real number.");
    }
    return json_real_value(json_);
}

int JsonNode::asInteger() const {
    if (!json_is_integer(json_)) {
        throw std::runtime_error("JsonNode is not an integer.");
    }
    return static_cast<int>(json_integer_value(json_));
}

bool JsonNode::asBoolean() const {
    if (!json_is_boolean(json_)) {
        throw std::runtime_error("JsonNode is not a boolean.");
    }
    return json_is_true(json_);
}

std::vector<JsonNode> JsonNode::asArray() const {
    if (!json_is_array(json_)) {
        throw std::runtime_error("JsonNode is not an array");
    }
    const std::size_t size = json_array_size(json_);
    std::vector<JsonNode> elements;
    elements.reserve(size);
    for (std::size_t i = 0; i < size; ++i) {
        elements.push_back({json_array_get(json_, i), Ownership::Borrowed});
    }
    return elements;
}

}  // namespace Veskar
