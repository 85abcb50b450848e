// SPDX-License-Identifier: Apache-2.0
#include "host/json/JanssonValue.h"

#include "host/json/FieldsDefinition.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Veskar::Host::Internal {
namespace {

std::size_t flagsFor(JsonDocument::Leniency leniency) {
    using Leniency = JsonDocument::Leniency;
    const std::size_t repeats = leniency == Leniency::RepeatedKeys ? 0 : JSON_REJECT_DUPLICATES;
    const std::size_t rest = leniency == Leniency::TextBehind ? JSON_DISABLE_EOF_CHECK : 0;
    return JSON_DECODE_ANY | repeats | rest;
}

std::string textOf(const json_error_t& error) {
    return "line " + std::to_string(error.line) + ", column " + std::to_string(error.column) +
           ": " + error.text;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

JsonKind JanssonValue::kind() const {
    switch (json_typeof(value_)) {
        case JSON_OBJECT:
            return JsonKind::Object;
        case JSON_ARRAY:
            return JsonKind::Array;
        case JSON_STRING:
            return JsonKind::String;
        case JSON_INTEGER:
            return JsonKind::Integer;
        case JSON_REAL:
            return JsonKind::Fraction;
        case JSON_TRUE:
        case JSON_FALSE:
            return JsonKind::Boolean;
        default:
            return JsonKind::Null;
    }
}

bool JanssonValue::fitsInt32() const {
    using Limits = std::numeric_limits<std::int32_t>;
    const json_int_t wide = json_integer_value(value_);
    return Limits::min() <= wide && wide <= Limits::max();
}

std::optional<std::uint64_t> JanssonValue::unsignedInteger() const {
    const json_int_t wide = json_integer_value(value_);
    const bool isFit = json_is_integer(value_) && wide >= 0;
    return isFit ? std::optional(static_cast<std::uint64_t>(wide)) : std::nullopt;
}

JsonDocument::JsonDocument(std::string_view text, Leniency leniency) {
    json_error_t error;
    document_.reset(json_loadb(text.data(), text.size(), flagsFor(leniency), &error));
    if (!document_) {
        throw JsonFault(textOf(error));
    }
}

JsonDocument JsonDocument::ofFile(const std::string& path, Leniency leniency) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "re"));
    if (!file) {
        throw InputError(std::strerror(errno));
    }
    json_error_t error;
    json_t* const document = json_loadf(file.get(), flagsFor(leniency), &error);
    if (document == nullptr) {
        throw JsonFault(textOf(error));
    }
    return JsonDocument(document);
}

template class BasicFields<JanssonValue>;

}  // namespace Veskar::Host::Internal
