// SPDX-License-Identifier: Apache-2.0
// Any text as a sensor frame, an installation and the constants of a host: each is read or refused
// with a reason. What was read goes through a pipeline, and constants are the same once they have
// been written and read again.
#include <veskar-host/veskar-host.h>
#include <veskar/Config.h>

#include "host/TestInstallation.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <optional>
#include <string>

using namespace VeskarFuzz;
using namespace Veskar::Host;

namespace {

/// @return what was read, or nothing when it is refused
template <typename Read>
auto read(Read take) -> std::optional<decltype(take())> {
    try {
        return take();
    } catch (const InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

void fuse(const Installation& installation, const SensorFrame& frame) {
    static const Veskar::Config config = Veskar::Config::defaults();
    FusionPipeline::Options options;
    options.asksForPosition = false;
    FusionPipeline pipeline(
        installation, config, [](const FusedFrame& fused) { toJsonLine(fused); }, {}, options);
    pipeline.push(frame);
    pipeline.advance(frame.received + 1.0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(asText(data, size));
    const auto frame = read([&] { return parseSensorFrame(text); });
    if (frame) {
        fuse(VeskarTest::testInstallation(), *frame);
        read([&] { return parseSensorFrame(toJsonLine(*frame)); });
    }
    if (const auto installation = read([&] { return Installation::parseString(text); })) {
        RadarReport report;
        report.range = 20.0;
        report.radialSpeed = 1.0;
        fuse(*installation, {Veskar::Radar, 1.0, 1.0, {report}});
    }
    if (const auto constants = read([&] { return HostParameters::fromConfig(text); })) {
        const std::string written = "{\"veskarHost\":" + constants->toJson() + "}";
        require(HostParameters::fromConfig(written).toJson() == constants->toJson(),
                "writing and reading agree");
    }
    return 0;
}
