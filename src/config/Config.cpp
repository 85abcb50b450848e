// SPDX-License-Identifier: Apache-2.0
#include <veskar/Config.h>
#include <veskar/JsonNode.h>

#include "config/DefaultConfiguration.h"
#include "config/SectionReader.h"

namespace Veskar {

Config::VideoInput Config::VideoInput::parse(const JsonNode& node) {
    return parseSection<VideoInput>(node);
}

Config::FusionInputs Config::FusionInputs::parse(const JsonNode& node) {
    return parseSection<FusionInputs>(node);
}

Config::GainNegative Config::GainNegative::parse(const JsonNode& node) {
    return parseSection<GainNegative>(node);
}

Config::ModuleConfig Config::ModuleConfig::parse(const JsonNode& node) {
    return parseSection<ModuleConfig>(node);
}

Config::PriorityConfig Config::PriorityConfig::parse(const JsonNode& node) {
    return parseSection<PriorityConfig>(node);
}

Config::Rules Config::Rules::parse(const JsonNode& node) {
    return parseSection<Rules>(node);
}

Config Config::parse(const JsonNode& node) {
    return parseSection<Config>(node);
}

Config Config::parse(const std::string& path) {
    return parse(JsonNode::fromFile(path));
}

Config Config::parse_json_string(const std::string& json) {
    return parse(JsonNode::fromString(json));
}

Config Config::defaults() {
    return parse_json_string(defaultConfiguration);
}

std::string Config::defaultsText() {
    return defaultConfiguration;
}

}  // namespace Veskar
