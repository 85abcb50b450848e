// SPDX-License-Identifier: Apache-2.0
#include "export/FoxgloveSchemas.h"

#include <initializer_list>
#include <map>
#include <utility>

namespace Workbench {
namespace {

Json typed(const char* type) {
    return {{"type", type}};
}

Json listOf(Json item) {
    return {{"type", "array"}, {"items", std::move(item)}};
}

Json objectOf(std::initializer_list<std::pair<const char*, Json>> members) {
    Json properties = Json::object();
    for (const auto& [name, schema] : members) {
        properties[name] = schema;
    }
    return {{"type", "object"}, {"properties", properties}};
}

Json numbersOf(std::initializer_list<const char*> names) {
    Json properties = Json::object();
    for (const char* name : names) {
        properties[name] = typed("number");
    }
    return {{"type", "object"}, {"properties", properties}};
}

/// @param title "time" or "duration": viewers know them by it
Json secondsAs(const char* title) {
    Json schema = objectOf({{"sec", typed("integer")}, {"nsec", typed("integer")}});
    schema["title"] = title;
    return schema;
}

const Json textType = typed("string");
const Json numberType = typed("number");
const Json flagType = typed("boolean");
const Json timestampType = secondsAs("time");
const Json vector2Type = numbersOf({"x", "y"});
const Json vector3Type = numbersOf({"x", "y", "z"});
const Json quaternionType = numbersOf({"x", "y", "z", "w"});
const Json colorType = numbersOf({"r", "g", "b", "a"});
const Json poseType = objectOf({{"position", vector3Type}, {"orientation", quaternionType}});
const Json metadataType = listOf(objectOf({{"key", textType}, {"value", textType}}));

Json sceneUpdate() {
    const Json cube = objectOf({{"pose", poseType}, {"size", vector3Type}, {"color", colorType}});
    const Json arrow = objectOf({{"pose", poseType},
                                 {"shaft_length", numberType},
                                 {"shaft_diameter", numberType},
                                 {"head_length", numberType},
                                 {"head_diameter", numberType},
                                 {"color", colorType}});
    const Json label = objectOf({{"pose", poseType},
                                 {"billboard", flagType},
                                 {"font_size", numberType},
                                 {"scale_invariant", flagType},
                                 {"color", colorType},
                                 {"text", textType}});
    const Json unused = listOf(typed("object"));
    const Json deletion =
        objectOf({{"timestamp", timestampType}, {"type", typed("integer")}, {"id", textType}});
    const Json entity = objectOf({{"timestamp", timestampType},
                                  {"frame_id", textType},
                                  {"id", textType},
                                  {"lifetime", secondsAs("duration")},
                                  {"frame_locked", flagType},
                                  {"metadata", metadataType},
                                  {"arrows", listOf(arrow)},
                                  {"cubes", listOf(cube)},
                                  {"spheres", unused},
                                  {"cylinders", unused},
                                  {"lines", unused},
                                  {"triangles", unused},
                                  {"texts", listOf(label)},
                                  {"models", unused}});
    return objectOf({{"deletions", listOf(deletion)}, {"entities", listOf(entity)}});
}

Json locationFixes() {
    const Json fix = objectOf({{"timestamp", timestampType},
                               {"frame_id", textType},
                               {"latitude", numberType},
                               {"longitude", numberType},
                               {"altitude", numberType},
                               {"position_covariance", listOf(numberType)},
                               {"position_covariance_type", typed("integer")},
                               {"color", colorType},
                               {"metadata", metadataType}});
    return objectOf({{"fixes", listOf(fix)}});
}

Json frameTransforms() {
    const Json transform = objectOf({{"timestamp", timestampType},
                                     {"parent_frame_id", textType},
                                     {"child_frame_id", textType},
                                     {"translation", vector3Type},
                                     {"rotation", quaternionType}});
    return objectOf({{"transforms", listOf(transform)}});
}

Json imageAnnotations() {
    const Json points = objectOf({{"timestamp", timestampType},
                                  {"type", typed("integer")},
                                  {"points", listOf(vector2Type)},
                                  {"outline_color", colorType},
                                  {"outline_colors", listOf(colorType)},
                                  {"fill_color", colorType},
                                  {"thickness", numberType}});
    const Json label = objectOf({{"timestamp", timestampType},
                                 {"position", vector2Type},
                                 {"text", textType},
                                 {"font_size", numberType},
                                 {"text_color", colorType},
                                 {"background_color", colorType}});
    return objectOf({{"circles", listOf(typed("object"))},
                     {"points", listOf(points)},
                     {"texts", listOf(label)}});
}

}  // namespace

Json foxgloveSchema(const std::string& name) {
    static const std::map<std::string, Json (*)()> schemas{
        {"SceneUpdate", sceneUpdate},
        {"LocationFixes", locationFixes},
        {"FrameTransforms", frameTransforms},
        {"GeoJSON",
         [] {
             return objectOf({{"geojson", textType}});
         }},
        {"ImageAnnotations", imageAnnotations}};
    Json schema = schemas.at(name)();
    schema["title"] = "foxglove." + name;
    return schema;
}

}  // namespace Workbench
