// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/SensorFrame.h>

#include "host/json/JanssonValue.h"
#include "host/recording/FrameChecks.h"
#include "host/recording/FrameFields.h"

namespace Veskar::Host {

SensorFrame parseSensorFrame(std::string_view text) {
    using namespace Internal;
    const JsonDocument document(text);
    const BasicFields<JanssonValue> fields(document.root());
    const std::string source = fields.text("source");
    if (source != "video" && source != "radar") {
        fields.refuse("source", "\"" + source + "\" is not video or radar");
    }
    SensorFrame frame = readSensorFrame(fields, source == "radar" ? Radar : VideoObject);
    refuseEarlyArrival(frame);
    refuseBoxesUpsideDown(frame);
    return frame;
}

}  // namespace Veskar::Host
