// SPDX-License-Identifier: Apache-2.0
// Scene descriptions as text: XML and JSON.
#pragma once

#include "live/onvif/ElementTree.h"
#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneDescription.h"

#include <memory>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Reads scene descriptions. Both forms of one description give the same scene. The memory of a
/// usual message is kept for the next one. One thread at a time may use a reader.
///
/// Messages are taken for hostile: sizes, depth and numbers of elements are limited, nothing is
/// expanded, and what is not understood is never guessed. A faulty message is refused as a whole,
/// with the name of the field and the reason.
class SceneReader {
public:
    /// @param limits of a message
    explicit SceneReader(const TextLimits& limits = {});
    ~SceneReader();
    SceneReader(const SceneReader&) = delete;
    SceneReader& operator=(const SceneReader&) = delete;

    /// @param text an XML document with a MetadataStream of any number of frames
    /// @param leftOut counts what a scene has no place for
    /// @return the frames in the order of the document
    /// @throw Host::InputError the fault, as "Frame[0].UtcTime: missing"
    Scene readXml(std::string_view text, LeftOut& leftOut);
    /// @param text a JSON object, as it is published over MQTT
    /// @param leftOut as above
    /// @return as above
    /// @throw Host::InputError as above
    Scene readJson(std::string_view text, LeftOut& leftOut);

private:
    struct Memory;

    std::unique_ptr<Memory> memory_;
};

/// @param scene frames
/// @return an XML document with a MetadataStream, in one line without line end
std::string toXml(const Scene& scene);

/// @param scene frames
/// @return a JSON object as it is published over MQTT, in one line without line end
std::string toJson(const Scene& scene);

}  // namespace Veskar::Live
