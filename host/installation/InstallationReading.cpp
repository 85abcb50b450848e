// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/Installation.h>

#include "host/installation/HeaderFields.h"
#include "host/installation/InstallationKeys.h"
#include "host/json/JanssonValue.h"

namespace Veskar::Host {
namespace {

using namespace Internal;

/// Frames stand behind the header of a recording, nothing behind an object of its own.
bool isHeader(const JsonDocument& document) {
    return BasicFields<JanssonValue>(document.root()).has("format");
}

Installation installationOf(const JsonDocument& document) {
    const BasicFields<JanssonValue> fields(document.root());
    if (isHeader(document)) {
        const RecordingHeader header = readHeader(fields);
        return {header.camera, header.radar, header.site};
    }
    fields.allowOnly(installationKeys);
    return readInstallation(fields);
}

}  // namespace

Installation Installation::parse(const std::string& path) {
    try {
        JsonDocument document = JsonDocument::ofFile(path, JsonDocument::Leniency::TextBehind);
        if (!isHeader(document)) {
            document = JsonDocument::ofFile(path);
        }
        return installationOf(document);
    } catch (const InputError& error) {
        throw InputError(path, error);
    }
}

Installation Installation::parseString(const std::string& text) {
    JsonDocument document(text, JsonDocument::Leniency::TextBehind);
    if (!isHeader(document)) {
        document = JsonDocument(text);
    }
    return installationOf(document);
}

}  // namespace Veskar::Host
