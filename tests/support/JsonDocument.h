// SPDX-License-Identifier: Apache-2.0
// A JSON document that tests modify before passing it to the library as text.
#pragma once

#include <string>
#include <vector>

struct json_t;

namespace VeskarTest {

/// Paths name members from the root, separated by '/': "veskarModule/gainNegative/radar".
class JsonDocument {
public:
    /// @param path a JSON file; relative to the root of the source tree
    explicit JsonDocument(const std::string& path);
    JsonDocument(const JsonDocument& other);
    JsonDocument& operator=(const JsonDocument&) = delete;
    ~JsonDocument();

    /// Replaces or adds a member; @p value is JSON text.
    JsonDocument& set(const std::string& path, const std::string& value);
    /// Removes a member, which must exist.
    JsonDocument& erase(const std::string& path);
    /// @return the paths of all members that are not objects
    std::vector<std::string> leaves() const;
    /// @return a member, or the document, as JSON text
    std::string text(const std::string& path = {}) const;

private:
    json_t* root_;
};

/// @return the bytes of a file; a relative path refers to the root of the source tree
std::string readFile(const std::string& path);

}  // namespace VeskarTest
