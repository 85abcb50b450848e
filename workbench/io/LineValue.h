// SPDX-License-Identifier: Apache-2.0
// JSON values of lines, which are read in large numbers.
#pragma once

#include "HostLibrary.h"
#include "host/json/Fields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include <simdjson.h>

namespace Workbench {

/// A value in a line of JSON Lines, parsed in place. Valid until the parser reads the next line.
class LineValue {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): a value is all there is to it
    LineValue(simdjson::dom::element element) : value_(element) {}

    /// The members of an object, by name. There is no index: the search starts behind the last
    /// found member, so that members requested in their order are found at once.
    class Members {
    public:
        explicit Members(const LineValue& owner)
            : object_(owner.value_.get_object().value_unsafe()), next_(object_.begin()) {}
        std::optional<LineValue> find(std::string_view name) const {
            const auto start = next_;
            const auto isFound = [&](auto from, auto to) {
                for (next_ = from; next_ != to; ++next_) {
                    if (next_.key_equals(name)) {
                        return true;
                    }
                }
                return false;
            };
            if (!isFound(start, object_.end()) && !isFound(object_.begin(), start)) {
                return std::nullopt;
            }
            const LineValue found = next_.value();
            ++next_;
            return found;
        }
        template <typename Visit>
        void forEachName(Visit visit) const {
            for (const auto& member : object_) {
                visit(member.key);
            }
        }

    private:
        simdjson::dom::object object_;
        mutable simdjson::dom::object::iterator next_;
    };

    JsonKind kind() const;
    double number() const { return value_.get_double().value_unsafe(); }
    /// Only for an Integer.
    bool fitsInt32() const;
    std::int32_t integer() const {
        return static_cast<std::int32_t>(value_.get_int64().value_unsafe());
    }
    bool boolean() const { return value_.get_bool().value_unsafe(); }
    std::string_view text() const { return value_.get_string().value_unsafe(); }
    std::size_t size() const { return value_.get_array().value_unsafe().size(); }
    template <typename Visit>
    void forEachItem(Visit visit) const {
        const simdjson::dom::array items = value_.get_array().value_unsafe();
        for (const simdjson::dom::element item : items) {
            visit(LineValue(item));
        }
    }

private:
    simdjson::dom::element value_;
};

/// The members of the object in a line.
using LineFields = BasicFields<LineValue>;

}  // namespace Workbench

extern template class Veskar::Host::Internal::BasicFields<Workbench::LineValue>;
