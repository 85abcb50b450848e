// SPDX-License-Identifier: Apache-2.0
#include <veskar/Config.h>
#include <veskar/NearestWord.h>

#include "config/ConfigText.h"
#include "config/KeyTables.h"
#include "config/WrittenJson.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Veskar {
namespace {

using Effect = ConfigFault::Effect;
using Kind = WrittenValue::Kind;

/// What the reader wants for a field of this type.
template <typename Value>
constexpr const char* wantedFor() {
    if constexpr (std::is_same_v<Value, double>) {
        return "a real number";
    } else if constexpr (std::is_same_v<Value, int>) {
        return "an integer";
    } else if constexpr (std::is_same_v<Value, bool>) {
        return "true or false";
    } else {
        return "an object";
    }
}

template <typename Value>
constexpr Kind kindFor() {
    if constexpr (std::is_same_v<Value, double>) {
        return Kind::Real;
    } else if constexpr (std::is_same_v<Value, int>) {
        return Kind::Integer;
    } else if constexpr (std::is_same_v<Value, bool>) {
        return Kind::Boolean;
    } else {
        return Kind::Object;
    }
}

std::string shown(const WrittenValue& value) {
    switch (value.kind()) {
        case Kind::Object:
            return "an object";
        case Kind::Array:
            return "an array";
        default:
            return value.text;
    }
}

/// @return "4 is an integer", or "null stands" when the value says itself what it is
std::string described(const WrittenValue& value) {
    switch (value.kind()) {
        case Kind::Integer:
            return value.text + " is an integer";
        case Kind::Real:
            return value.text + " is a real number";
        case Kind::Boolean:
            return value.text + " is a boolean";
        case Kind::String:
            return value.text + " is a string";
        default:
            return shown(value) + " stands";
    }
}

/// @return how the same value is written with the wanted type; empty where that is not possible
template <typename Value>
std::string rewritten(const WrittenValue& value) {
    const Kind kind = value.kind();
    if constexpr (std::is_same_v<Value, double>) {
        return kind == Kind::Integer ? value.text + ".0" : "";
    } else if constexpr (std::is_same_v<Value, int>) {
        const std::size_t digits = value.text.find(".0");
        const bool isWhole = kind == Kind::Real && digits != std::string::npos &&
                             value.text.find_first_not_of('0', digits + 1) == std::string::npos;
        return isWhole ? value.text.substr(0, digits) : "";
    } else if constexpr (std::is_same_v<Value, bool>) {
        return value.text == "0" ? "false" : value.text == "1" ? "true" : "";
    } else {
        return "";
    }
}

/// @return why a value is not of the type; empty when it is
template <typename Value>
std::string misfit(const WrittenValue& value) {
    if (value.kind() == kindFor<Value>()) {
        return "";
    }
    const std::string right = rewritten<Value>(value);
    return described(value) + " where " + wantedFor<Value>() + " is needed" +
           (right.empty() ? "" : ": write " + right);
}

/// Compares a section, as it is written, with its table of keys.
class SectionCheck {
public:
    SectionCheck(const WrittenValue& section, std::string path, std::vector<ConfigFault>& faults)
        : section_(section), path_(std::move(path)), faults_(faults) {}

    template <typename Record>
    void run() {
        if (const std::string reason = misfit<Record>(section_); !reason.empty()) {
            faults_.push_back({Effect::Refused, section_.line, path_, shown(section_), reason});
            return;
        }
        std::apply([&](const auto&... key) { (check(key), ...); }, keysOf<Record>);
        if constexpr (std::is_same_v<Record, Config>) {
            known_.emplace_back("veskarHost");  // for the library for hosts, which reads it
        }
        checkNames();
    }

private:
    template <typename Record, typename Value>
    void check(const RequiredKey<Record, Value>& key) {
        const WrittenValue* value = member(key.name);
        if (value == nullptr) {
            faults_.push_back({Effect::Refused, section_.line, placeOf(key.name), "",
                               std::string("missing; ") + wantedFor<Value>() + " is needed"});
        } else if constexpr (std::is_class_v<Value>) {
            SectionCheck(*value, placeOf(key.name), faults_).template run<Value>();
        } else if (const std::string reason = misfit<Value>(*value); !reason.empty()) {
            add(Effect::Refused, *value, reason);
        } else {
            checkWidth<Value>(*value);
        }
    }

    template <typename Record, typename Value>
    void check(const OptionalKey<Record, Value>& key) {
        const WrittenValue* value = member(key.name);
        if (value == nullptr) {
            return;
        }
        if (const std::string reason = misfit<Value>(*value); !reason.empty()) {
            add(Effect::Replaced, *value, reason + "; " + jsonOf(key.fallback) + " is used");
        } else {
            checkWidth<Value>(*value);
        }
    }

    template <typename Record, typename Value>
    void check(const OptionalSection<Record, Value>& key) {
        const WrittenValue* value = member(key.name);
        if (value == nullptr) {
            return;
        }
        if (const std::string reason = misfit<Value>(*value); !reason.empty()) {
            add(Effect::Replaced, *value, reason + "; its defaults are used");
        } else {
            SectionCheck(*value, placeOf(key.name), faults_).template run<Value>();
        }
    }

    void check(const HumanAspectKeys& keys) {
        const WrittenValue* limits[] = {member(keys.least), member(keys.most)};
        const auto isGood = [](const WrittenValue* value) {
            return value != nullptr && misfit<double>(*value).empty();
        };
        if (isGood(limits[0]) && isGood(limits[1])) {
            return;
        }
        const std::string used = "; " + jsonOf(keys.fallback.first) + " and " +
                                 jsonOf(keys.fallback.second) + " are used";
        for (const WrittenValue* value : limits) {
            if (isGood(value)) {
                add(Effect::Ignored, *value,
                    value->text + " has no effect without its counterpart" + used);
            } else if (value != nullptr) {
                add(Effect::Replaced, *value, misfit<double>(*value) + used);
            }
        }
    }

    /// The reader keeps the lower 32 bits of an integer.
    template <typename Value>
    void checkWidth(const WrittenValue& value) {
        if constexpr (std::is_same_v<Value, int>) {
            const std::int64_t number = std::stoll(value.text);
            if (number != static_cast<int>(number)) {
                add(Effect::Replaced, value,
                    value.text + " does not fit into 32 bits; " + jsonOf(static_cast<int>(number)) +
                        " is used");
            }
        }
    }

    /// Reports keys that are not known and keys that are repeated.
    void checkNames() {
        std::set<std::string> seen;
        for (const WrittenValue& value : section_.members) {
            if (std::find(known_.begin(), known_.end(), value.key) == known_.end()) {
                const std::string meant = nearestWord(value.key, known_);
                add(Effect::Ignored, value,
                    "the key is not known" + (meant.empty() ? "" : "; is " + meant + " meant?"));
            }
            if (!seen.insert(value.key).second) {
                add(Effect::Replaced, value,
                    "the key stands here a second time; only the last one counts");
            }
        }
    }

    const WrittenValue* member(const char* name) {
        known_.emplace_back(name);
        return section_.find(name);
    }

    void add(Effect effect, const WrittenValue& value, std::string reason) {
        faults_.push_back(
            {effect, value.line, placeOf(value.key), shown(value), std::move(reason)});
    }

    std::string placeOf(const std::string& name) const {
        return path_.empty() ? name : path_ + "." + name;
    }

    const WrittenValue& section_;
    std::string path_;
    std::vector<ConfigFault>& faults_;
    std::vector<std::string> known_;  ///< the keys of the table, once they are checked
};

}  // namespace

std::string ConfigFault::text() const {
    const std::string place = "line " + std::to_string(line);
    return (key.empty() ? place : key + " (" + place + ")") + ": " + reason;
}

std::vector<ConfigFault> Config::findFaults(const std::string& json) {
    std::vector<ConfigFault> faults;
    try {
        const WrittenValue root = readWritten(json);
        SectionCheck(root, "", faults).run<Config>();
    } catch (const JsonSyntaxError& error) {
        return {{Effect::Refused, error.line, "", "", error.what()}};
    }
    std::stable_sort(faults.begin(), faults.end(),
                     [](const ConfigFault& a, const ConfigFault& b) { return a.line < b.line; });
    return faults;
}

}  // namespace Veskar
