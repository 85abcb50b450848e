// SPDX-License-Identifier: Apache-2.0
#include "export/McapExport.h"

#include <veskar/Version.h>

#include "export/FoxgloveSchemas.h"

namespace Workbench {

McapExport::McapExport(OutputFile& output, const RecordingHeader& header)
    : header_(header),
      messages_(header),
      writer_(output, std::string("veskar ") + Veskar::veskarVersion()) {}

void McapExport::add(const std::string& layer, const FusedFrame& frame) {
    if (isFirst_) {
        isFirst_ = false;
        send("/tf", "FrameTransforms", frame, messages_.mountings(frame.time));
        if (header_.site) {
            send("/map", "GeoJSON", frame, messages_.map());
        }
    }
    send("/" + layer + "/scene", "SceneUpdate", frame, messages_.sceneOf(layer, frame));
    if (header_.site) {
        send("/" + layer + "/locations", "LocationFixes", frame,
             messages_.locationsOf(layer, frame));
    }
    send("/" + layer + "/image", "ImageAnnotations", frame, messages_.annotationsOf(layer, frame));
}

void McapExport::send(const std::string& topic, const char* schema, const FusedFrame& frame,
                      const Json& message) {
    auto channel = channels_.find(topic);
    if (channel == channels_.end()) {
        auto known = schemas_.find(schema);
        if (known == schemas_.end()) {
            known =
                schemas_
                    .emplace(schema, writer_.addSchema(std::string("foxglove.") + schema,
                                                       "jsonschema", foxgloveSchema(schema).dump()))
                    .first;
        }
        channel = channels_.emplace(topic, writer_.addChannel(known->second, topic, "json")).first;
    }
    writer_.addMessage(channel->second, messages_.nanoseconds(frame.received),
                       messages_.nanoseconds(frame.time), message.dump());
}

}  // namespace Workbench
