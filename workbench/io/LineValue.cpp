// SPDX-License-Identifier: Apache-2.0
#include "io/LineValue.h"

#include "host/json/FieldsDefinition.h"

#include <limits>

namespace Workbench {

JsonKind LineValue::kind() const {
    switch (value_.type()) {
        case simdjson::dom::element_type::OBJECT:
            return JsonKind::Object;
        case simdjson::dom::element_type::ARRAY:
            return JsonKind::Array;
        case simdjson::dom::element_type::STRING:
            return JsonKind::String;
        case simdjson::dom::element_type::BOOL:
            return JsonKind::Boolean;
        case simdjson::dom::element_type::INT64:
        case simdjson::dom::element_type::UINT64:
            return JsonKind::Integer;
        case simdjson::dom::element_type::DOUBLE:
            return JsonKind::Fraction;
        default:
            return JsonKind::Null;
    }
}

bool LineValue::fitsInt32() const {
    using Limits = std::numeric_limits<std::int32_t>;
    std::int64_t wide = 0;
    return value_.get(wide) == simdjson::SUCCESS && Limits::min() <= wide && wide <= Limits::max();
}

}  // namespace Workbench

template class Veskar::Host::Internal::BasicFields<Workbench::LineValue>;
