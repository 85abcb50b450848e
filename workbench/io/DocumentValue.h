// SPDX-License-Identifier: Apache-2.0
// Values of a JSON document that is read as a whole.
#pragma once

#include "io/Fields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace Workbench {

/// A value of a whole document, which may hold comments. Borrows the document.
class DocumentValue {
public:
    /// @param value outlives this
    // NOLINTNEXTLINE(google-explicit-constructor): a value is all there is to it
    DocumentValue(const nlohmann::json& document) : value(&document) {}

    /// The members of an object, by name.
    class Members {
    public:
        explicit Members(const DocumentValue& owner) : object(owner.value) {}
        std::optional<DocumentValue> find(std::string_view name) const {
            const auto found = object->find(name);
            return found == object->end() ? std::nullopt : std::optional<DocumentValue>(*found);
        }
        template <typename Visit>
        void forEachName(Visit visit) const {
            for (const auto& member : object->items()) {
                visit(std::string_view(member.key()));
            }
        }

    private:
        const nlohmann::json* object;
    };

    JsonKind kind() const;
    double number() const { return value->get<double>(); }
    /// Meaningful for an Integer.
    bool fitsInt32() const;
    std::int32_t integer() const { return value->get<std::int32_t>(); }
    bool boolean() const { return value->get<bool>(); }
    std::string_view text() const { return value->get_ref<const std::string&>(); }
    std::size_t size() const { return value->size(); }
    template <typename Visit>
    void forEachItem(Visit visit) const {
        for (const nlohmann::json& item : *value) {
            visit(DocumentValue(item));
        }
    }
    /// @return the value in the parser's own form
    const nlohmann::json& json() const { return *value; }

private:
    const nlohmann::json* value;
};

/// The fields of a whole document: a header, a camera, a scenario.
using Fields = BasicFields<DocumentValue>;
extern template class BasicFields<DocumentValue>;

}  // namespace Workbench
