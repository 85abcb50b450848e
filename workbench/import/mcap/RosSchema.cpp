// SPDX-License-Identifier: Apache-2.0
#include "import/mcap/RosSchema.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/Printable.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr const char* blank = " \t\r";
constexpr std::size_t deepest = 32;  // definitions above each other; those of sensors need five

const std::map<std::string, std::size_t, std::less<>> primitiveSizes{
    {"bool", 1},   {"byte", 1},    {"char", 1},    {"int8", 1},   {"uint8", 1},
    {"int16", 2},  {"uint16", 2},  {"int32", 4},   {"uint32", 4}, {"int64", 8},
    {"uint64", 8}, {"float32", 4}, {"float64", 8}, {"string", 0}};

/// Takes a word off the begin of a line.
std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(blank), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blank));
    line.remove_prefix(word.size());
    return word;
}

/// "radar_msgs/msg/RadarTrack" and "radar_msgs/RadarTrack" are one.
std::string withoutKind(std::string name) {
    const std::size_t kind = name.find("/msg/");
    return kind == name.npos ? name : name.replace(kind, 5, "/");
}

/// @param package of the definition that names the type
std::string fullName(std::string_view type, const std::string& package) {
    if (primitiveSizes.count(type) > 0) {
        return std::string(type);
    }
    if (type == "Header") {
        return "std_msgs/Header";
    }
    return type.find('/') == type.npos ? package + "/" + std::string(type)
                                       : withoutKind(std::string(type));
}

}  // namespace

RosSchema::RosSchema(const std::string& name, std::string_view text) : name_(withoutKind(name)) {
    std::string current = name_;
    std::size_t begin = 0;
    for (std::size_t at = 0; at <= text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const bool isRule = text.substr(at, 3) == "===";
        if (isRule || end == text.size()) {
            addDefinition(current, text.substr(begin, (isRule ? at : end) - begin));
        }
        at = end + 1;
        if (isRule) {
            constexpr std::string_view mark = "MSG:";
            std::string_view line = text.substr(std::min(at, text.size()));
            line = line.substr(0, line.find('\n'));
            if (takeWord(line) != mark) {
                throw InputError("a definition has no name");
            }
            current = withoutKind(std::string(takeWord(line)));
            at = std::min(text.find('\n', at), text.size()) + 1;
            begin = std::min(at, text.size());
        }
    }
    std::map<std::string, std::size_t> heights;
    heightOf(name_, 1, heights);
}

void RosSchema::addDefinition(const std::string& name, std::string_view text) {
    Fields fields;
    const std::string package = name.substr(0, name.find('/'));
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        line = line.substr(0, line.find('#'));
        std::string_view type = takeWord(line);
        if (type.empty()) {
            continue;
        }
        const std::string_view fieldName = takeWord(line);
        line.remove_prefix(std::min(line.find_first_not_of(blank), line.size()));
        if (fieldName.find('=') != fieldName.npos || line.substr(0, 1) == "=") {
            continue;  // a constant
        }
        if (fieldName.empty()) {
            throw InputError(fmt::format("{}: \"{}\" is no field", printable(name),
                                         printable(std::string(type))));
        }
        Field field;
        field.name = fieldName;
        if (const std::size_t bracket = type.find('['); bracket != type.npos) {
            const std::string size(type.substr(bracket + 1, type.find(']') - bracket - 1));
            const bool isFixed = !size.empty() && std::isdigit(static_cast<unsigned char>(size[0]));
            field.many = isFixed ? Many::Fixed : Many::Sequence;
            field.count = isFixed ? std::strtoul(size.c_str(), nullptr, 10) : 0;
            type = type.substr(0, bracket);
        }
        type = type.substr(0, type.find("<="));
        field.type = fullName(type, package);
        fields.push_back(std::move(field));
    }
    definitions_[name] = std::move(fields);
}

/// Makes sure that every type has a definition, and none contains itself.
/// @param depth of the definition below that of the message; this one included
/// @param heights of the definitions that have been looked at; 0 while they are
/// @return how many definitions stand above each other
std::size_t RosSchema::heightOf(const std::string& name, std::size_t depth,
                                std::map<std::string, std::size_t>& heights) const {
    const auto found = definitions_.find(name);
    if (found == definitions_.end()) {
        throw InputError(fmt::format("the type {} has no definition", printable(name)));
    }
    const auto [known, isNew] = heights.try_emplace(name, 0);
    if (!isNew && known->second == 0) {
        throw InputError(fmt::format("the type {} contains itself", printable(name)));
    }
    if (isNew) {
        std::size_t height = 1;
        for (const Field& field : found->second) {
            if (depth <= deepest && primitiveSizes.count(field.type) == 0) {
                height = std::max(height, 1 + heightOf(field.type, depth + 1, heights));
            }
        }
        if (depth > deepest || height > deepest) {
            throw InputError(fmt::format("the type {} is nested too deeply", printable(name)));
        }
        known->second = height;
    }
    return known->second;
}

/// Reads one message from its begin to its end.
class RosMessageReader {
public:
    RosMessageReader(const RosSchema& schema, std::string_view data) : schema_(schema) {
        constexpr std::size_t header = 4;
        if (data.size() < header) {
            throw InputError("the message is too short");
        }
        const int representation =
            static_cast<std::uint8_t>(data[0]) << 8 | static_cast<std::uint8_t>(data[1]);
        if (representation > 1) {
            throw InputError("the message is not in plain CDR");
        }
        isLittle_ = representation == 1;
        data_ = data.substr(header);
    }

    nlohmann::json object(const std::string& name) {
        nlohmann::json result = nlohmann::json::object();
        const RosSchema::Fields& fields = schema_.definitions_.at(name);
        if (fields.empty()) {
            take(1);  // ROS gives an empty message a byte
        }
        for (const RosSchema::Field& field : fields) {
            result[field.name] =
                field.many == RosSchema::Many::One ? value(field.type) : array(field);
        }
        return result;
    }

private:
    nlohmann::json array(const RosSchema::Field& field) {
        const std::size_t count =
            field.many == RosSchema::Many::Fixed ? field.count : number<std::uint32_t>();
        // An item takes a byte at least.
        if (count > data_.size() - at_) {
            throw InputError(fmt::format("{}: the message ends within it", printable(field.name)));
        }
        nlohmann::json items = nlohmann::json::array();
        for (std::size_t i = 0; i < count; ++i) {
            items.push_back(value(field.type));
        }
        return items;
    }

    nlohmann::json value(const std::string& type) {
        const auto primitive = primitiveSizes.find(type);
        if (primitive == primitiveSizes.end()) {
            return object(type);
        }
        if (type == "string") {
            return text();
        }
        if (type == "float64") {
            return number<double>();
        }
        if (type == "float32") {
            return number<float>();
        }
        const bool isSigned = type[0] == 'i';
        switch (primitive->second) {
            case 1:
                return isSigned ? nlohmann::json(number<std::int8_t>())
                                : nlohmann::json(number<std::uint8_t>());
            case 2:
                return isSigned ? nlohmann::json(number<std::int16_t>())
                                : nlohmann::json(number<std::uint16_t>());
            case 4:
                return isSigned ? nlohmann::json(number<std::int32_t>())
                                : nlohmann::json(number<std::uint32_t>());
            default:
                return isSigned ? nlohmann::json(number<std::int64_t>())
                                : nlohmann::json(number<std::uint64_t>());
        }
    }

    std::string text() {
        const std::size_t size = number<std::uint32_t>();
        const std::string_view bytes = take(size);
        return std::string(bytes.substr(0, bytes.find('\0')));
    }

    template <typename Number>
    Number number() {
        constexpr std::size_t size = sizeof(Number);
        at_ = (at_ + size - 1) / size * size;
        const std::string_view bytes = take(size);
        std::uint64_t digits = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = isLittle_ ? size - 1 - i : i;
            digits = digits << 8 | static_cast<std::uint8_t>(bytes[place]);
        }
        if constexpr (std::is_same_v<Number, double>) {
            return asReal<double>(digits);
        } else if constexpr (std::is_same_v<Number, float>) {
            return asReal<float>(static_cast<std::uint32_t>(digits));
        } else {
            return static_cast<Number>(digits);
        }
    }

    template <typename Real, typename Digits>
    static Real asReal(Digits digits) {
        static_assert(sizeof(Real) == sizeof(Digits));
        Real real;
        std::memcpy(&real, &digits, sizeof(real));
        return real;
    }

    std::string_view take(std::size_t size) {
        if (at_ > data_.size() || size > data_.size() - at_) {
            throw InputError("the message is too short");
        }
        const std::string_view taken = data_.substr(at_, size);
        at_ += size;
        return taken;
    }

    const RosSchema& schema_;
    std::string_view data_;
    std::size_t at_ = 0;
    bool isLittle_ = true;
};

nlohmann::json RosSchema::read(std::string_view data) const {
    return RosMessageReader(*this, data).object(name_);
}

}  // namespace Workbench
