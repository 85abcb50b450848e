// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SceneCodec.h"

#include "live/onvif/JsonElements.h"
#include "live/onvif/SceneReading.h"
#include "live/onvif/SceneWriting.h"
#include "live/onvif/XmlElements.h"

namespace Veskar::Live {

struct SceneReader::Memory {
    explicit Memory(const TextLimits& limits) : xml(limits), json(limits) {}

    ElementTree tree;
    XmlElements xml;
    JsonElements json;
};

SceneReader::SceneReader(const TextLimits& limits) : memory_(std::make_unique<Memory>(limits)) {}

SceneReader::~SceneReader() = default;

Scene SceneReader::readXml(std::string_view text, LeftOut& leftOut) {
    memory_->xml.read(text, memory_->tree);
    return readScene(memory_->tree, leftOut);
}

Scene SceneReader::readJson(std::string_view text, LeftOut& leftOut) {
    memory_->json.read(text, memory_->tree);
    return readScene(memory_->tree, leftOut);
}

std::string toXml(const Scene& scene) {
    ElementTree tree;
    writeScene(scene, tree);
    return toXml(tree);
}

std::string toJson(const Scene& scene) {
    ElementTree tree;
    writeScene(scene, tree);
    return toJson(tree);
}

}  // namespace Veskar::Live
