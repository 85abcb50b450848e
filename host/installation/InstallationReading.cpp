// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/Installation.h>

#include "host/json/JanssonValue.h"
#include "host/installation/HeaderFields.h"

namespace Veskar::Host {
namespace {

using namespace Internal;

Installation installationOf(const JsonDocument& document) {
    const BasicFields<JanssonValue> fields(document.root());
    if (fields.has("format")) {
        const RecordingHeader header = readHeader(fields);
        return {header.camera, header.radar, header.site};
    }
    fields.allowOnly({"camera", "radar", "site"});
    return readInstallation(fields);
}

}  // namespace

Installation Installation::parse(const std::string& path) {
    const JsonDocument document = JsonDocument::firstOf(path);
    try {
        return installationOf(document);
    } catch (const InputError& error) {
        throw InputError(path + ": " + error.what());
    }
}

Installation Installation::parseString(const std::string& text) {
    return installationOf(JsonDocument(text, JsonDocument::Leniency::TextBehind));
}

}  // namespace Veskar::Host
