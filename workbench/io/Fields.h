// SPDX-License-Identifier: Apache-2.0
// Checked access to the members of a JSON object.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// The members of one JSON object. Every failure says which member of which object is wrong and
/// what was expected, as "tracks[3].range: expected a number, found a string".
///
/// Borrows the document; a value that lives as long as the reading of one object.
class Fields {
public:
    /// @param value what should be an object
    /// @param path its place in the document, "" for the root
    /// @throw InputError when it is no object
    Fields(const nlohmann::json& value, std::string path);

    /// Refuses every member that is not listed: a misspelt name must not pass for a default.
    /// @param names the names that are known
    /// @throw InputError naming the first unknown member
    void allowOnly(std::initializer_list<std::string_view> names) const;
    /// @copydoc allowOnly
    void allowOnly(const std::vector<std::string_view>& names) const;

    /// @param name a member
    /// @return whether it is there and not null
    bool has(const char* name) const;
    /// @param name a member
    /// @return the member
    /// @throw InputError when it is missing
    const nlohmann::json& at(const char* name) const;
    /// @param name a member
    /// @return the member's place in the document
    std::string pathOf(std::string_view name) const;
    /// @param name a member
    /// @param what what is wrong with it
    [[noreturn]] void refuse(const char* name, const std::string& what) const;

    /// @param name a member that is a number
    /// @return the number; always finite, since JSON text has no other numbers
    double number(const char* name) const;
    /// @param name a member that is a number, or missing
    /// @param otherwise value when it is missing
    /// @return the number
    double number(const char* name, double otherwise) const;
    /// @param name a member that is a number, or missing
    /// @return the number
    std::optional<double> optionalNumber(const char* name) const;
    /// @param name a member that is a number
    /// @param least smallest legal value
    /// @param most largest legal value
    /// @return the number
    double numberWithin(const char* name, double least, double most) const;
    /// @param name as numberWithin, or missing
    /// @param least smallest legal value
    /// @param most largest legal value
    /// @param otherwise value when it is missing
    /// @return the number
    double numberWithin(const char* name, double least, double most, double otherwise) const;
    /// @param name a member that is an integer of 32 bits
    /// @return the integer
    std::int32_t integer(const char* name) const;
    /// @param name a member that is true or false, or missing
    /// @param otherwise value when it is missing
    /// @return the truth value
    bool boolean(const char* name, bool otherwise) const;
    /// @param name a member that is a string
    /// @return the string
    std::string text(const char* name) const;
    /// @param name a member that is a string, or missing
    /// @param otherwise value when it is missing
    /// @return the string
    std::string text(const char* name, std::string_view otherwise) const;
    /// @param name a member that is an array
    /// @return the array
    const nlohmann::json& array(const char* name) const;
    /// @param name a member that is an array of numbers
    /// @param count how many
    /// @param values receives the numbers
    void numbers(const char* name, std::size_t count, double* values) const;
    /// @param name a member that is an object
    /// @return its members
    Fields object(const char* name) const;

private:
    template <typename Names>
    void refuseOthers(const Names& names) const;

    const nlohmann::json* object_;
    std::string path;
};

}  // namespace Workbench
