// SPDX-License-Identifier: Apache-2.0
// Scene descriptions for the tests.
#pragma once

#include "live/onvif/SceneCodec.h"
#include "live/support/OnvifSchema.h"

#include <fstream>
#include <iterator>
#include <string>

#include <SourceDirectory.h>

namespace VeskarTest {

/// @param path a file
/// @return its text; empty when there is none
inline std::string textOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// @param name a file of tests/live/onvif/data
/// @return its text
inline std::string sample(const std::string& name) {
    return textOfFile(VESKAR_SOURCE_DIR "/tests/live/onvif/data/" + name);
}

/// @param frames JSON text of the frames
/// @return a message with them
inline std::string jsonFrames(const std::string& frames) {
    return "{\"Frame\":[" + frames + "]}";
}

/// @param members further JSON members of a frame, each behind a comma
/// @return a message with one frame at 2026-05-01T12:00:00Z
inline std::string jsonFrame(const std::string& members) {
    return jsonFrames("{\"@UtcTime\":\"2026-05-01T12:00:00Z\"" + members + "}");
}

/// @param content XML text inside a VideoAnalytics, with the prefix tt
/// @return a document with it
inline std::string xmlDocument(const std::string& content) {
    return "<tt:MetadataStream xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:VideoAnalytics>" +
           content + "</tt:VideoAnalytics></tt:MetadataStream>";
}

}  // namespace VeskarTest
