// SPDX-License-Identifier: Apache-2.0
#include "support/JsonDocument.h"

#include "SourceDirectory.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <jansson.h>

namespace VeskarTest {
namespace {

json_t* parseAnything(const std::string& text) {
    json_error_t error;
    json_t* value = json_loadb(text.data(), text.size(), JSON_DECODE_ANY, &error);
    if (value == nullptr) {
        throw std::invalid_argument("not JSON: " + text + ": " + error.text);
    }
    return value;
}

json_t* find(json_t* from, const std::string& path) {
    std::istringstream names(path);
    for (std::string name; std::getline(names, name, '/');) {
        from = json_object_get(from, name.c_str());
    }
    if (from == nullptr) {
        throw std::invalid_argument("no member " + path);
    }
    return from;
}

struct Split {
    std::string parent;
    std::string name;
};

Split split(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? Split{"", path}
                                      : Split{path.substr(0, slash), path.substr(slash + 1)};
}

void collectLeaves(json_t* object, const std::string& prefix, std::vector<std::string>& leaves) {
    const char* name = nullptr;
    json_t* value = nullptr;
    json_object_foreach(object, name, value) {
        if (json_is_object(value)) {
            collectLeaves(value, prefix + name + "/", leaves);
        } else {
            leaves.push_back(prefix + name);
        }
    }
}

}  // namespace

std::string readFile(const std::string& path) {
    std::ifstream file(std::filesystem::path(VESKAR_SOURCE_DIR) / path, std::ios::binary);
    if (!file) {
        throw std::invalid_argument("cannot read " + path);
    }
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

JsonDocument::JsonDocument(const std::string& path) : root_(parseAnything(readFile(path))) {}

JsonDocument::JsonDocument(const JsonDocument& other) : root_(json_deep_copy(other.root_)) {}

JsonDocument::~JsonDocument() {
    json_decref(root_);
}

JsonDocument& JsonDocument::set(const std::string& path, const std::string& value) {
    const auto [parent, name] = split(path);
    json_object_set_new(find(root_, parent), name.c_str(), parseAnything(value));
    return *this;
}

JsonDocument& JsonDocument::erase(const std::string& path) {
    const auto [parent, name] = split(path);
    if (json_object_del(find(root_, parent), name.c_str()) != 0) {
        throw std::invalid_argument("no member " + path);
    }
    return *this;
}

std::vector<std::string> JsonDocument::leaves() const {
    std::vector<std::string> paths;
    collectLeaves(root_, "", paths);
    return paths;
}

std::string JsonDocument::text(const std::string& path) const {
    const std::unique_ptr<char, decltype(&std::free)> dumped(
        json_dumps(find(root_, path), JSON_ENCODE_ANY), &std::free);
    return dumped.get();
}

}  // namespace VeskarTest
