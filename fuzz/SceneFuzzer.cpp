// SPDX-License-Identifier: Apache-2.0
// Any text as ONVIF scene descriptions, as XML when it begins with '<' and as JSON otherwise; NUL
// bytes part messages. Each is read or refused with a reason. What was read is the same in both
// forms once it has been written and read again, and its sensor frames can be recorded: finite
// numbers, boxes upright, ids unique.
#include <veskar-host/InputError.h>

#include "host/TestInstallation.h"
#include "host/recording/FrameChecks.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SceneMapper.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>

using namespace VeskarFuzz;
using namespace Veskar;
using namespace Veskar::Live;

namespace {

std::optional<Scene> read(SceneReader& reader, std::string_view text, LeftOut& leftOut) {
    try {
        const bool isXml = !text.empty() && text.front() == '<';
        return isXml ? reader.readXml(text, leftOut) : reader.readJson(text, leftOut);
    } catch (const Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

/// Names and words with control characters, which XML cannot hold, are written as others; times
/// are cut off to microseconds. What was written once is therefore the measure.
void compareForms(SceneReader& reader, const Scene& scene) {
    LeftOut ignored;
    const std::optional<Scene> written = read(reader, toXml(scene), ignored);
    if (!written) {
        return;  // a number was rounded beyond its range
    }
    const std::optional<Scene> xml = read(reader, toXml(*written), ignored);
    const std::optional<Scene> json = read(reader, toJson(*written), ignored);
    require(xml && json, "what was read twice is read again");
    require(toXml(*xml) == toXml(*written), "writing and reading XML agree");
    require(toXml(*json) == toXml(*written), "writing and reading JSON agree");
}

Host::Installation installation() {
    Host::Installation usual = VeskarTest::testInstallation();
    usual.site = Host::Site{55.7, 13.2, 140.0};
    return usual;
}

void check(const Host::SensorFrame& frame) {
    std::set<std::int32_t> ids;
    for (const Host::Report& report : frame.tracks) {
        require(ids.insert(baseOf(report).id).second, "ids are unique within a frame");
    }
    try {
        Host::Internal::refuseBoxesUpsideDown(frame);
        Host::parseSensorFrame(toJsonLine(frame));
    } catch (const Host::InputError& error) {
        require(false, error.what());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Host::Installation usual = installation();
    SceneReader reader;
    SceneMapper mapper(usual);
    std::string_view rest = asText(data, size);
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('\0'), rest.size());
        if (const auto scene = read(reader, rest.substr(0, length), mapper.leftOut())) {
            compareForms(reader, *scene);
            for (const StampedFrame& stamped : mapper.map(*scene, "")) {
                check(stamped.frame);
            }
        }
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return 0;
}
