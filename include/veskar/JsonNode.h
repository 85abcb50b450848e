// SPDX-License-Identifier: Apache-2.0
// Typed access to JSON that throws what is wrong.
#pragma once

#include <veskar/Export.h>

#include <string>
#include <vector>

struct json_t;

namespace Veskar {

/// A JSON value, or none.
///
/// A node from fromFile or fromString owns one reference to its document. A node from get or
/// asArray borrows: it is valid only while an owning node of its document lives. Copies of an
/// owning node own a reference of their own; copies of a borrowed one borrow.
///
/// Numbers are strict: 3 is an integer and no real, 3.0 a real and no integer. The nodes of one
/// document may be read concurrently; copying, assigning and destroying owning nodes of one
/// document is for one thread at a time.
class VESKAR_EXPORT JsonNode {
public:
    /// A node without a value; every access to it throws.
    JsonNode() = default;
    /// @param other node to copy
    JsonNode(const JsonNode& other);
    /// @param other node to empty
    JsonNode(JsonNode&& other) noexcept;
    /// @param other node to copy
    /// @return this node
    JsonNode& operator=(const JsonNode& other);
    /// @param other node to empty
    /// @return this node
    JsonNode& operator=(JsonNode&& other) noexcept;
    ~JsonNode();

    /// Loads a document from a file.
    ///
    /// @param path the file
    /// @return an owning node
    /// @throw std::runtime_error "Failed to load json from file: " with path and reason
    static JsonNode fromFile(const std::string& path);
    /// Loads a document from text.
    ///
    /// @param text the whole document
    /// @return an owning node
    /// @throw std::runtime_error "Failed to load json from string: " with text and reason
    static JsonNode fromString(const std::string& text);

    /// @param key name of a member
    /// @return the member, borrowed from this document
    /// @throw std::runtime_error "No such key: " with the key, also when this is not an object
    JsonNode get(const std::string& key) const;
    /// @return the number
    /// @throw std::runtime_error "JsonNode is not a real number.", also for an integer
    double asReal() const;
    /// @return the number, cut to 32 bits
    /// @throw std::runtime_error "JsonNode is not an integer.", also for a real
    int asInteger() const;
    /// @return the truth value
    /// @throw std::runtime_error "JsonNode is not a boolean."
    bool asBoolean() const;
    /// @return the elements in order, borrowed from this document
    /// @throw std::runtime_error "JsonNode is not an array"
    std::vector<JsonNode> asArray() const;

private:
    /// Whether a node holds a reference of its own.
    enum class Ownership { Owning, Borrowed };

    JsonNode(json_t* value, Ownership ownership);

    json_t* json_ = nullptr;
    bool borrowed_ = false;
};

}  // namespace Veskar
