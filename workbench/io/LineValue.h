// SPDX-License-Identifier: Apache-2.0
// Values of JSON Lines, which are many and have to be read quickly.
#pragma once

#include "io/Fields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <simdjson.h>

namespace Workbench {

/// A value of one line of JSON Lines, read in place. Valid until the parser reads the next line.
class LineValue {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): a value is all there is to it
    LineValue(simdjson::dom::element element) : value(element) {}

    /// The members of an object, by name. Lines have no index of names: the search goes on behind
    /// the member found last, which finds members at once that are asked for in their order.
    class Members {
    public:
        explicit Members(const LineValue& owner)
            : object(owner.value.get_object().value_unsafe()), next(object.begin()) {}
        std::optional<LineValue> find(std::string_view name) const {
            const auto start = next;
            const auto isFound = [&](auto from, auto to) {
                for (next = from; next != to; ++next) {
                    if (next.key_equals(name)) {
                        return true;
                    }
                }
                return false;
            };
            if (!isFound(start, object.end()) && !isFound(object.begin(), start)) {
                return std::nullopt;
            }
            const LineValue found = next.value();
            ++next;
            return found;
        }
        template <typename Visit>
        void forEachName(Visit visit) const {
            for (const auto& member : object) {
                visit(member.key);
            }
        }

    private:
        simdjson::dom::object object;
        mutable simdjson::dom::object::iterator next;
    };

    JsonKind kind() const;
    double number() const { return value.get_double().value_unsafe(); }
    /// Meaningful for an Integer.
    bool fitsInt32() const;
    std::int32_t integer() const {
        return static_cast<std::int32_t>(value.get_int64().value_unsafe());
    }
    bool boolean() const { return value.get_bool().value_unsafe(); }
    std::string_view text() const { return value.get_string().value_unsafe(); }
    std::size_t size() const { return value.get_array().value_unsafe().size(); }
    template <typename Visit>
    void forEachItem(Visit visit) const {
        const simdjson::dom::array items = value.get_array().value_unsafe();
        for (const simdjson::dom::element item : items) {
            visit(LineValue(item));
        }
    }

private:
    simdjson::dom::element value;
};

/// The fields of a line.
using LineFields = BasicFields<LineValue>;
extern template class BasicFields<LineValue>;

}  // namespace Workbench
