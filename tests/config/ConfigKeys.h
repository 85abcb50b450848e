// SPDX-License-Identifier: Apache-2.0
// Every key of the fusion configuration with its type, its field and its default.
#pragma once

#include <veskar/Config.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace VeskarTest {

/// The value of a key; the alternative is the type that the document must use.
using KeyValue = std::variant<bool, int, double>;

/// A key that sets one field.
struct ConfigKey {
    std::string section;  ///< path of the object that holds it
    std::string name;
    std::function<KeyValue(const Veskar::Config&)> field;
    std::optional<KeyValue> fallback;  ///< default of an optional key

    std::string path() const { return section + "/" + name; }
};

inline std::ostream& operator<<(std::ostream& out, const ConfigKey& key) {
    return out << key.path();
}

/// In the order of the fields; without the aspect limits of a human, which are read together.
const std::vector<ConfigKey>& configKeys();

/// A section with its required keys, in the order of reading.
struct ConfigSection {
    std::string path;                   ///< empty for the root
    int parsers;                        ///< how many parsers a failure in it propagates through
    std::vector<std::string> required;  ///< in the order of reading
};

inline std::ostream& operator<<(std::ostream& out, const ConfigSection& section) {
    return out << "section '" << section.path << "'";
}

const std::vector<ConfigSection>& configSections();
/// @return the section at @p path
const ConfigSection& configSection(const std::string& path);

}  // namespace VeskarTest
