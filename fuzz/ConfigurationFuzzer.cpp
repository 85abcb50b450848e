// SPDX-License-Identifier: Apache-2.0
// Any text as a configuration and as a camera. `check` reports a fault in whatever the library
// rejects; findFaults and the reader of a configuration agree on whether there is one; reading,
// writing and reading again gives the same configuration; and a camera returns a result for every
// point of the image.
#include <veskar/Camera.h>
#include <veskar/Config.h>

#include "check/DocumentCheck.h"
#include "io/Compression.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string>

using namespace VeskarFuzz;
using Workbench::DocumentKind;

namespace {

/// @return the document, or nothing when it is rejected
template <typename Parse>
auto read(Parse parse, const std::string& text) -> std::optional<decltype(parse(text))> {
    try {
        return parse(text);
    } catch (const std::exception& error) {
        require(*error.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

bool isRefused(const Veskar::ConfigFault& fault) {
    return fault.effect == Veskar::ConfigFault::Effect::Refused;
}

void readConfiguration(const InputFile& file, const std::string& text) {
    const auto config = read(Veskar::Config::parse_json_string, text);
    const auto findings = checkDocument(file.path(), DocumentKind::Configuration);
    require(config || hasFault(findings), "a configuration that the library refuses has a fault");
    const auto faults = Veskar::Config::findFaults(text);
    require(config.has_value() == std::none_of(faults.begin(), faults.end(), isRefused),
            "the search for faults finds what is refused");
    if (config) {
        const std::string written = config->toJson();
        require(Veskar::Config::parse_json_string(written).toJson() == written,
                "writing and reading agree");
    }
}

void readCamera(const InputFile& file, const std::string& text) {
    const auto parse = [](const std::string& json) { return Veskar::Camera::parse(json); };
    const auto camera = read(parse, text);
    const auto findings = checkDocument(file.path(), DocumentKind::Camera);
    require(camera || hasFault(findings), "a camera that the library refuses has a fault");
    if (camera) {
        for (const double u : {-1.0, 0.0, 0.7}) {
            for (const double v : {-1.0, 0.0, 1.0}) {
                static_cast<void>(camera->getRangeToTarget(u, v, 1.0));
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (Workbench::decoderOf(asText(data, size))) {
        return 0;  // damaged compressed data cannot be read; recordings show that this is told
    }
    const InputFile file(asText(data, size));
    const std::string text(asText(data, size));
    readConfiguration(file, text);
    readCamera(file, text);
    return 0;
}
