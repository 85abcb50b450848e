// SPDX-License-Identifier: Apache-2.0
// Reads the header of a recording: its members, their types and their limits.
#pragma once

#include "host/installation/InstallationFields.h"
#include "host/installation/InstallationKeys.h"
#include "host/installation/RecordingHeader.h"
#include "host/json/Fields.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace Veskar::Host::Internal {

/// @param fields members of a header
/// @return what the truth lines cover
/// @throw InputError the fault
template <typename Value>
TruthKind readTruthKind(const BasicFields<Value>& fields) {
    const std::string kind = fields.text("truth", "none");
    if (kind == "none") {
        return TruthKind::None;
    }
    if (kind == "incomplete") {
        return TruthKind::Incomplete;
    }
    if (kind != "complete") {
        fields.refuse("truth", "\"" + kind + "\" is not none, incomplete or complete");
    }
    return TruthKind::Complete;
}

/// @param fields an object that states its format and version
/// @param format the required format
/// @param version the required version
/// @throw InputError when format or version differ
template <typename Value>
void requireFormat(const BasicFields<Value>& fields, const std::string& format, int version) {
    if (const std::string found = fields.text("format"); found != format) {
        fields.refuse("format", "expected \"" + format + "\", found \"" + found + "\"");
    }
    if (const int found = fields.integer("version"); found != version) {
        fields.refuse("version", "version " + std::to_string(found) +
                                     " is not supported, this program reads version " +
                                     std::to_string(version));
    }
}

/// @param fields members of a header
/// @return the header
/// @throw InputError the fault
template <typename Value>
RecordingHeader readHeader(const BasicFields<Value>& fields) {
    requireFormat(fields, "veskar-recording", recordingVersion);
    const Keys keys(headerKeys);
    fields.allowOnly(keys);
    RecordingHeader header;
    header.name = fields.text(keys["name"]);
    header.origin = fields.text(keys["origin"]);
    header.licence = fields.text(keys["licence"]);
    static_cast<Installation&>(header) = readInstallation(fields);
    header.epoch = fields.optionalNumber("epoch");
    if (fields.has("seed")) {
        header.seed = fields.at("seed").unsignedInteger();
        // What the JSON library of the devices can hold.
        constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
        if (!header.seed || *header.seed > most) {
            fields.refuse("seed", "expected an integer from 0 to " + std::to_string(most));
        }
    }
    header.truth = readTruthKind(fields);
    return header;
}

}  // namespace Veskar::Host::Internal
