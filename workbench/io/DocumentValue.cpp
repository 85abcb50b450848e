// SPDX-License-Identifier: Apache-2.0
#include "io/DocumentValue.h"

#include "host/json/FieldsDefinition.h"

#include <limits>

namespace Workbench {

JsonKind DocumentValue::kind() const {
    switch (value_->type()) {
        case nlohmann::json::value_t::object:
            return JsonKind::Object;
        case nlohmann::json::value_t::array:
            return JsonKind::Array;
        case nlohmann::json::value_t::string:
            return JsonKind::String;
        case nlohmann::json::value_t::boolean:
            return JsonKind::Boolean;
        case nlohmann::json::value_t::number_integer:
        case nlohmann::json::value_t::number_unsigned:
            return JsonKind::Integer;
        case nlohmann::json::value_t::number_float:
            return JsonKind::Fraction;
        default:
            return JsonKind::Null;
    }
}

bool DocumentValue::fitsInt32() const {
    using Limits = std::numeric_limits<std::int32_t>;
    if (value_->is_number_unsigned()) {
        return value_->get<std::uint64_t>() <= std::uint64_t{Limits::max()};
    }
    return value_->get<std::int64_t>() >= Limits::min();
}

std::optional<std::uint64_t> DocumentValue::unsignedInteger() const {
    return value_->is_number_unsigned() ? std::optional(value_->get<std::uint64_t>())
                                        : std::nullopt;
}

}  // namespace Workbench

template class Veskar::Host::Internal::BasicFields<Workbench::DocumentValue>;
