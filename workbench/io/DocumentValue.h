// SPDX-License-Identifier: Apache-2.0
// JSON values of documents that are read as a whole.
#pragma once

#include "HostLibrary.h"
#include "host/json/Fields.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

namespace Workbench {

/// A value of a document, which may contain comments. Borrows the document.
class DocumentValue {
public:
    /// @param value outlives this
    // NOLINTNEXTLINE(google-explicit-constructor): a value is all there is to it
    DocumentValue(const nlohmann::json& document) : value_(&document) {}

    /// The members of an object, by name.
    class Members {
    public:
        explicit Members(const DocumentValue& owner) : object_(owner.value_) {}
        std::optional<DocumentValue> find(std::string_view name) const {
            const auto found = object_->find(name);
            return found == object_->end() ? std::nullopt : std::optional<DocumentValue>(*found);
        }
        template <typename Visit>
        void forEachName(Visit visit) const {
            for (const auto& member : object_->items()) {
                visit(std::string_view(member.key()));
            }
        }

    private:
        const nlohmann::json* object_;
    };

    JsonKind kind() const;
    double number() const { return value_->get<double>(); }
    /// Only for an Integer.
    bool fitsInt32() const;
    /// @return the value of a non-negative integer; nothing otherwise
    std::optional<std::uint64_t> unsignedInteger() const;
    std::int32_t integer() const { return value_->get<std::int32_t>(); }
    bool boolean() const { return value_->get<bool>(); }
    std::string_view text() const { return value_->get_ref<const std::string&>(); }
    std::size_t size() const { return value_->size(); }
    template <typename Visit>
    void forEachItem(Visit visit) const {
        for (const nlohmann::json& item : *value_) {
            visit(DocumentValue(item));
        }
    }
    /// @return the parser's value
    const nlohmann::json& json() const { return *value_; }

private:
    const nlohmann::json* value_;
};

/// The members of an object in a document: a header, a camera, a scenario.
using Fields = BasicFields<DocumentValue>;

}  // namespace Workbench

extern template class Veskar::Host::Internal::BasicFields<Workbench::DocumentValue>;
