// SPDX-License-Identifier: Apache-2.0
// JSON values of Jansson, which the core uses, too.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/InputError.h>

#include "host/json/Fields.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <jansson.h>

namespace Veskar::Host::Internal {

/// A value of a JsonDocument. Borrows the document.
class VESKAR_HOST_EXPORT JanssonValue {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): a value is all there is to it
    JanssonValue(const json_t* value) : value_(value) {}

    /// The members of an object, by name.
    class Members {
    public:
        explicit Members(const JanssonValue& owner) : object_(owner.value_) {}
        std::optional<JanssonValue> find(std::string_view name) const {
            const json_t* const found = json_object_get(object_, std::string(name).c_str());
            return found == nullptr ? std::nullopt : std::optional<JanssonValue>(found);
        }
        template <typename Visit>
        void forEachName(Visit visit) const {
            // json_object_iter takes no const object, but does not change it.
            auto* const object = const_cast<json_t*>(object_);
            for (void* next = json_object_iter(object); next != nullptr;
                 next = json_object_iter_next(object, next)) {
                visit(std::string_view(json_object_iter_key(next)));
            }
        }

    private:
        const json_t* object_;
    };

    JsonKind kind() const;
    double number() const { return json_number_value(value_); }
    /// Only for an Integer.
    bool fitsInt32() const;
    /// @return the value of a non-negative integer; nothing otherwise
    std::optional<std::uint64_t> unsignedInteger() const;
    std::int32_t integer() const { return static_cast<std::int32_t>(json_integer_value(value_)); }
    bool boolean() const { return json_is_true(value_); }
    std::string_view text() const {
        return {json_string_value(value_), json_string_length(value_)};
    }
    std::size_t size() const { return json_array_size(value_); }
    template <typename Visit>
    void forEachItem(Visit visit) const {
        for (std::size_t i = 0; i < size(); ++i) {
            visit(JanssonValue(json_array_get(value_, i)));
        }
    }

private:
    const json_t* value_;
};

extern template class VESKAR_HOST_EXPORT BasicFields<JanssonValue>;

/// Invalid JSON text.
class VESKAR_HOST_EXPORT JsonFault : public InputError {
public:
    using InputError::InputError;
};

/// A JSON document.
class VESKAR_HOST_EXPORT JsonDocument {
public:
    /// Deviations from strict JSON text of one value that are accepted.
    enum class Leniency {
        None,
        TextBehind,   ///< text after the value
        RepeatedKeys  ///< keys that occur twice in an object: the last one is used
    };

    /// @param text JSON text of any value
    /// @param leniency deviation that is accepted
    /// @throw JsonFault place and reason of the first syntax error, as "line 3, column 7: ..."
    explicit JsonDocument(std::string_view text, Leniency leniency = Leniency::None);
    /// @param path a file
    /// @param leniency what is accepted beyond one value; what stands behind it is not read
    /// @return the document
    /// @throw InputError why it cannot be read
    static JsonDocument ofFile(const std::string& path, Leniency leniency = Leniency::None);

    /// @return the document's value
    JanssonValue root() const { return document_.get(); }

private:
    struct Release {
        void operator()(json_t* document) const { json_decref(document); }
    };

    explicit JsonDocument(json_t* document) : document_(document) {}

    std::unique_ptr<json_t, Release> document_;
};

}  // namespace Veskar::Host::Internal
