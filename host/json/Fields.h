// SPDX-License-Identifier: Apache-2.0
// Checked access to the members of a JSON object.
#pragma once

#include <veskar-host/ExportHost.h>

#include "host/json/JsonKind.h"
#include "host/json/Keys.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// The place of a value in a document. Borrows what encloses it; put into words only for a message.
struct VESKAR_HOST_EXPORT JsonPath {
    const JsonPath* enclosing = nullptr;  ///< null: the root
    std::string_view name;                ///< name of the member
    std::optional<std::size_t> item;      ///< index, when the member is an array

    /// @return text such as "tracks[3].box"; empty for the root
    std::string text() const;
};

/// @param wanted the expected kind, as "an array"
/// @param found the kind of the value
/// @return the message
VESKAR_HOST_EXPORT std::string expected(std::string_view wanted, JsonKind found);

/// @param kind kind of a value
/// @return whether it is a number
constexpr bool isNumber(JsonKind kind) {
    return kind == JsonKind::Integer || kind == JsonKind::Fraction;
}

/// Checked access to the members of a JSON object. Every error names the member with its place, and
/// what was expected: "tracks[3].range: expected a number, found a string".
///
/// Borrows the document and the fields of the enclosing object; both must outlive it.
///
/// @tparam Value a value of a JSON parser, such as JanssonValue
template <typename Value>
class BasicFields {
public:
    /// @param value must be an object
    /// @param path its place in the document; the root by default
    /// @throw InputError when it is not an object
    explicit BasicFields(const Value& value, const JsonPath& path = {});
    BasicFields(const BasicFields&) = delete;
    BasicFields& operator=(const BasicFields&) = delete;
    ~BasicFields() = default;

    /// Rejects unknown members, so that misspelt names are not silently replaced by defaults, and
    /// members that occur twice, because it is unclear which one is meant.
    /// @param names the allowed names, at most 64
    /// @throw InputError for the first such member
    void allowOnly(std::initializer_list<std::string_view> names) const;
    /// @copydoc allowOnly
    void allowOnly(const Keys& names) const;

    /// @param name a member
    /// @return whether it exists and is not null
    bool has(std::string_view name) const;
    /// @param name a member
    /// @return the member
    /// @throw InputError when it is missing
    Value at(std::string_view name) const;
    /// @param name a member
    /// @return the member's place in the document
    std::string pathOf(std::string_view name) const;
    /// @param name a member
    /// @param what the fault
    [[noreturn]] void refuse(std::string_view name, const std::string& what) const;

    /// @param name a member that is a number
    /// @return the number; always finite, because JSON has no other numbers
    double number(std::string_view name) const;
    /// @param name a member that is a number, or missing
    /// @param otherwise default
    /// @return the number
    double number(std::string_view name, double otherwise) const;
    /// @param name a member that is a number, or missing
    /// @return the number
    std::optional<double> optionalNumber(std::string_view name) const;
    /// @param name a member that is a number
    /// @param least smallest allowed value
    /// @param most largest allowed value
    /// @return the number
    double numberWithin(std::string_view name, double least, double most) const;
    /// @param name as numberWithin, or missing
    /// @param least smallest allowed value
    /// @param most largest allowed value
    /// @param otherwise default
    /// @return the number
    double numberWithin(std::string_view name, double least, double most, double otherwise) const;
    /// @param key a key of a number; its limits are allowed values
    /// @param otherwise default when it is not required and missing
    /// @return the number
    double number(const Key& key, double otherwise) const;
    /// @param name a member that is an integer of 32 bits
    /// @return the integer
    std::int32_t integer(std::string_view name) const;
    /// @param name a member that is true or false, or missing
    /// @param otherwise default
    /// @return the value
    bool boolean(std::string_view name, bool otherwise) const;
    /// @param key a key of a truth value
    /// @param otherwise default when it is not required and missing
    /// @return the value
    bool boolean(const Key& key, bool otherwise) const;
    /// @param name a member that is a string
    /// @return the string
    std::string text(std::string_view name) const;
    /// @param name a member that is a string, or missing
    /// @param otherwise default
    /// @return the string
    std::string text(std::string_view name, std::string_view otherwise) const;
    /// @param key a key of a string
    /// @param otherwise default when it is not required and missing
    /// @return the string
    std::string text(const Key& key, std::string_view otherwise = {}) const;
    /// @param name a member that is an array
    /// @return the array
    Value array(std::string_view name) const;
    /// Reads every item of an array of objects.
    /// @param name a member that is an array
    /// @param read called with the fields of each item
    template <typename Read>
    void forEach(std::string_view name, Read read) const {
        JsonPath place{&path_, name, 0};
        array(name).forEachItem([&](const Value& item) {
            read(BasicFields(item, place));
            ++*place.item;
        });
    }
    /// @param name a member that is an array of numbers
    /// @param count required length of the array
    /// @param values receives the numbers
    void numbers(std::string_view name, std::size_t count, double* values) const;
    /// @param key a key of an array of numbers
    /// @param values receives as many numbers as the key requires; their limits are not checked
    void numbers(const Key& key, double* values) const;
    /// @param name a member that is an object
    /// @return its members
    BasicFields object(std::string_view name) const;

private:
    template <typename Names>
    void refuseOthers(const Names& names) const;
    std::optional<Value> find(std::string_view name) const;
    double numberOf(const Value& value, std::string_view name) const;
    double within(double value, std::string_view name, double least, double most) const;

    JsonPath path_;
    typename Value::Members members_;
};

}  // namespace Veskar::Host::Internal
