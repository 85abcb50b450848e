// SPDX-License-Identifier: Apache-2.0
// Writing of scene descriptions.
#include "live/onvif/Samples.h"
#include "live/onvif/SceneCodec.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using testing::Not;

Scene sampleScene() {
    LeftOut leftOut;
    Scene scene = SceneReader().readXml(VeskarTest::sample("car-park.xml"), leftOut);
    // Everything that the sample has no example of.
    SceneObject dressed;
    dressed.name = {"text <&>\"'", ""};
    dressed.isDressed = true;
    dressed.tops = {{ColorSpace::CieLab, {50.0, -10.5, 3.25}, 0.5, std::nullopt}};
    dressed.vehicleTypes = {{"Bus", 0.5}, {"Truck", 0.25}};
    dressed.vehicleColors = {{ColorSpace::YCbCr, {16.0, 128.0, 128.0}, {}, 1.0}};
    dressed.isRemoved = true;
    dressed.spherical = SphericalPlace{};
    dressed.direction = MotionDirection{179.5, -45.25};
    scene[1].objects.push_back(dressed);
    return scene;
}

TEST(SceneWriter, WritesWhatTheReaderReads) {
    const Scene scene = sampleScene();
    SceneReader reader;
    LeftOut leftOut;
    EXPECT_EQ(toJson(reader.readJson(toJson(scene), leftOut)), toJson(scene));
    EXPECT_EQ(toXml(reader.readJson(toJson(scene), leftOut)), toXml(scene));
    EXPECT_EQ(toXml(reader.readXml(toXml(scene), leftOut)), toXml(scene));
    EXPECT_EQ(toJson(reader.readXml(toXml(scene), leftOut)), toJson(scene));
    EXPECT_THAT(leftOut.counts(), testing::IsEmpty());
}

TEST(SceneWriter, WritesOneLineOfXml) {
    SceneFrame frame;
    frame.time = std::chrono::seconds(1'777'636'800);
    SceneObject object;
    object.name.id = "12";
    object.shape =
        Shape{Host::ImageBox{-0.25, -0.5, 0.125, 0.0}, Eigen::Vector2d(1.0 / 3.0, -0.25), {}};
    object.classes = {{"Human", 0.75}};
    object.speed = 1.5;
    frame.objects = {object};
    frame.deletes = {{"4294967296", ""}};
    EXPECT_EQ(toXml({frame}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><tt:MetadataStream "
              "xmlns:tt=\"http://www.onvif.org/ver10/schema\"><tt:VideoAnalytics>"
              "<tt:Frame UtcTime=\"2026-05-01T12:00:00.000000Z\"><tt:Object ObjectId=\"12\">"
              "<tt:Appearance><tt:Shape>"
              "<tt:BoundingBox left=\"-0.25\" top=\"0\" right=\"0.125\" bottom=\"-0.5\"/>"
              "<tt:CenterOfGravity x=\"0.333333\" y=\"-0.25\"/></tt:Shape>"
              "<tt:Class><tt:Type Likelihood=\"0.75\">Human</tt:Type></tt:Class></tt:Appearance>"
              "<tt:Behaviour><tt:Speed>1.5</tt:Speed></tt:Behaviour></tt:Object>"
              "<tt:ObjectTree><tt:Delete ObjectId=\"4294967296\"/></tt:ObjectTree></tt:Frame>"
              "</tt:VideoAnalytics></tt:MetadataStream>");
    EXPECT_EQ(
        toJson({frame}),
        "{\"Frame\":[{\"@UtcTime\":\"2026-05-01T12:00:00.000000Z\",\"Object\":[{\"@ObjectId\":12,"
        "\"Appearance\":{\"Shape\":{\"BoundingBox\":{\"@left\":-0.25,\"@top\":0,\"@right\":0.125,"
        "\"@bottom\":-0.5},\"CenterOfGravity\":{\"@x\":0.333333,\"@y\":-0.25}},\"Class\":{\"Type\":"
        "["
        "{\"@Likelihood\":0.75,\"#text\":\"Human\"}]}},\"Behaviour\":{\"Speed\":1.5}}],"
        "\"ObjectTree\":{\"Delete\":[{\"@ObjectId\":4294967296}]}}]}");
}

TEST(SceneWriter, EscapesWhatWouldBeMarkup) {
    SceneFrame frame;
    frame.source = "a<b>&\"c\"\n\x01";
    const std::string xml = toXml({frame});
    EXPECT_THAT(xml, HasSubstr("Source=\"a&lt;b&gt;&amp;&quot;c&quot;  \""));
    EXPECT_THAT(xml, Not(HasSubstr("\x01")));
    LeftOut leftOut;
    EXPECT_EQ(SceneReader().readXml(xml, leftOut).at(0).source, "a<b>&\"c\"");
    EXPECT_EQ(SceneReader().readJson(toJson({frame}), leftOut).at(0).source, "a<b>&\"c\"\n\x01");
}

// Longer than what a string holds without memory of its own.
TEST(SceneWriter, WritesTheNamesOfRenamedObjects) {
    SceneFrame frame;
    frame.renames = {{{"the-first-name-of-an-object", "b7c1f2d0-0001-4a00-8000-00000000aaaa"},
                      {"the-second-name-of-an-object", "b7c1f2d0-0001-4a00-8000-00000000bbbb"}}};
    EXPECT_THAT(toJson({frame}),
                HasSubstr("\"Rename\":[{\"from\":{\"@ObjectId\":\"the-first-name-of-an-object\","
                          "\"@UUID\":\"b7c1f2d0-0001-4a00-8000-00000000aaaa\"},"
                          "\"to\":{\"@ObjectId\":\"the-second-name-of-an-object\","
                          "\"@UUID\":\"b7c1f2d0-0001-4a00-8000-00000000bbbb\"}}]"));
}

TEST(SceneWriter, WritesNoNegativeZeroInTransformations) {
    SceneFrame frame;
    frame.transformation.translate = {-0.0, 1.0};
    EXPECT_THAT(toXml({frame}), HasSubstr("<tt:Translate x=\"0\" y=\"1\"/>"));
}

/// The order of the schema, for the elements that a scene has.
const char* const schemaOrder[][20] = {
    {"Frame", "Transformation", "Object", "ObjectTree"},
    {"Object", "Appearance", "Behaviour"},
    {"Appearance", "Transformation", "Shape", "Color", "Class", "GeoLocation", "VehicleInfo",
     "HumanBody", "SphericalCoordinate"},
    {"Shape", "BoundingBox", "CenterOfGravity", "Polygon"},
    {"ColorCluster", "Color", "Weight"},
    {"Transformation", "Translate", "Scale"},
    {"VehicleInfo", "Type", "Color"},
    {"Clothing", "Tops", "Bottoms"},
    {"Tops", "Color", "Style"},
    {"Behaviour", "Removed", "Idle", "Speed", "Direction"},
    {"ObjectTree", "Rename", "Split", "Merge", "Delete"},
    {"Split", "from", "to"},
    {"Merge", "from", "to"},
    {"Rename", "from", "to"}};

std::string localName(const pugi::xml_node& node) {
    const std::string name = node.name();
    return name.substr(name.find(':') + 1);
}

TEST(SceneWriter, KeepsTheOrderOfTheSchema) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(toXml(sampleScene()).c_str()));
    for (const auto& order : schemaOrder) {
        const std::string xpath = "//*[local-name()='" + std::string(order[0]) + "']";
        const pugi::xpath_node_set found = document.select_nodes(xpath.c_str());
        EXPECT_FALSE(found.empty()) << order[0];
        for (const pugi::xpath_node& place : found) {
            std::size_t last = 1;
            for (const pugi::xml_node child : place.node().children()) {
                if (child.type() != pugi::node_element || std::string(order[0]) == "Color") {
                    continue;
                }
                std::size_t at = 1;
                while (order[at] != nullptr && localName(child) != order[at]) {
                    ++at;
                }
                ASSERT_NE(order[at], nullptr) << order[0] << " has " << child.name();
                EXPECT_GE(at, last) << child.name() << " in " << order[0];
                last = at;
            }
        }
    }
    for (const auto& place : document.select_nodes("//*[starts-with(name(), 'bd:')]")) {
        EXPECT_THAT((std::vector<std::string>{"Clothing", "Tops", "Bottoms", "Color", "Style"}),
                    testing::Contains(localName(place.node())));
    }
}

// Needs ONVIF's schemas and xmllint; without them the order above is all that is checked.
TEST(SceneWriter, IsValidByTheSchemaWhereItIs) {
    Scene scene = sampleScene();
    // The schema knows integers only, at least one part of a spherical coordinate is no rule.
    scene[1].objects.back().name = {"-3", ""};
    EXPECT_EQ(
        VeskarTest::faultsBySchema({toXml(scene), VeskarTest::sample("car-park.xml")}).value_or(""),
        "");
    // The check finds faults.
    std::string faulty = toXml(scene);
    faulty.replace(faulty.find("BoundingBox"), 11, "BoundingBax");
    EXPECT_NE(VeskarTest::faultsBySchema({faulty}), "");
}

}  // namespace
}  // namespace Veskar::Live
