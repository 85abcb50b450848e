// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigText.h"

#include <veskar/Config.h>
#include <veskar/Vocabulary.h>

#include "config/KeyTables.h"

#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Veskar {
namespace {

std::string digitsOf(double value, int count) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(count);
    text << value;
    return text.str();
}

/// @return whether the digits, which may be rounded beyond the largest number, give the value back
bool giveBack(const std::string& digits, double value) {
    std::istringstream text(digits);
    text.imbue(std::locale::classic());
    double number = 0.0;
    return (text >> number) && number == value;
}

/// Writes records member by member.
class ConfigWriter {
public:
    template <typename Record>
    void section(const Record& record) {
        text += "{";
        indentation_ += "    ";
        separator_ = "\n";
        std::apply([&](const auto&... key) { (write(key, record), ...); }, keysOf<Record>);
        indentation_.resize(indentation_.size() - 4);
        separator_ = ",\n";
        text += "\n" + indentation_ + "}";
    }

    std::string text;

private:
    template <typename Record, typename Value>
    void write(const RequiredKey<Record, Value>& key, const Record& record) {
        member(key.name, record.*key.field);
    }

    template <typename Record, typename Value>
    void write(const OptionalKey<Record, Value>& key, const Record& record) {
        member(key.name, record.*key.field);
    }

    template <typename Record, typename Value>
    void write(const OptionalSection<Record, Value>& key, const Record& record) {
        const Value& section = record.*key.field;
        const bool isDefault =
            std::apply([&](const auto&... k) { return ((section.*k.field == k.fallback) && ...); },
                       keysOf<Value>);
        if (!isDefault) {
            member(key.name, section);
        }
    }

    void write(const HumanAspectKeys& keys, const ModuleConfig& record) {
        const auto limits = record.autocalibrationAspectLimits.find(Vocabulary::human);
        if (limits != record.autocalibrationAspectLimits.end()) {
            member(keys.least, limits->second.first);
            member(keys.most, limits->second.second);
        }
    }

    template <typename Value>
    void member(const char* name, const Value& value) {
        text += separator_ + indentation_ + "\"" + name + "\": ";
        separator_ = ",\n";
        if constexpr (std::is_arithmetic_v<Value>) {
            text += jsonOf(value);
        } else {
            section(value);
        }
    }

    std::string indentation_;
    std::string separator_;
};

}  // namespace

std::string jsonOf(double value) {
    if (!std::isfinite(value)) {
        return "null";
    }
    int count = std::numeric_limits<double>::digits10;
    std::string digits = digitsOf(value, count);
    while (!giveBack(digits, value) && count < std::numeric_limits<double>::max_digits10) {
        digits = digitsOf(value, ++count);
    }
    const bool isReal = digits.find_first_of(".e") != std::string::npos;
    return isReal ? digits : digits + ".0";
}

std::string jsonOf(int value) {
    return std::to_string(value);
}

std::string jsonOf(bool value) {
    return value ? "true" : "false";
}

std::string Config::toJson() const {
    ConfigWriter writer;
    writer.section(*this);
    return std::move(writer.text);
}

}  // namespace Veskar
