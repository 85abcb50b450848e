// SPDX-License-Identifier: Apache-2.0
#include "host/installation/RecordingHeader.h"

#include "host/installation/InstallationText.h"

namespace Veskar::Host::Internal {
namespace {

const char* nameOf(TruthKind kind) {
    switch (kind) {
        case TruthKind::Incomplete:
            return "incomplete";
        case TruthKind::Complete:
            return "complete";
        case TruthKind::None:
            break;
    }
    return "none";
}

}  // namespace

void beginHeader(LineText& text, const std::string& format, int version,
                 const RecordingHeader& header) {
    text += "{\"format\":";
    text.addQuoted(format);
    text.addName("version");
    text.addInteger(version);
    text.addName("name");
    text.addQuoted(header.name);
    text.addName("origin");
    text.addQuoted(header.origin);
    text.addName("licence");
    text.addQuoted(header.licence);
    text.addName("camera");
    append(text, header.camera);
    text.addName("radar");
    append(text, header.radar);
}

std::string toJsonLine(const RecordingHeader& header) {
    LineText text;
    beginHeader(text, "veskar-recording", recordingVersion, header);
    if (header.site) {
        text.addName("site");
        append(text, *header.site);
    }
    if (header.epoch) {
        text.addName("epoch");
        text.addReal(*header.epoch);
    }
    if (header.seed) {
        text.addName("seed");
        text += std::to_string(*header.seed);
    }
    text.addName("truth");
    text.addQuoted(nameOf(header.truth));
    text += "}\n";
    return text.string();
}

}  // namespace Veskar::Host::Internal
