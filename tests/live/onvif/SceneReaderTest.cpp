// SPDX-License-Identifier: Apache-2.0
// Reading of scene descriptions, those of sensors and hostile ones.
#include <veskar-host/InputError.h>

#include "live/onvif/Samples.h"
#include "live/onvif/SceneCodec.h"

#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VeskarTest::jsonFrame;
using VeskarTest::jsonFrames;
using VeskarTest::sample;
using VeskarTest::xmlDocument;

Scene readXml(const std::string& text) {
    LeftOut leftOut;
    return SceneReader().readXml(text, leftOut);
}

Scene readJson(const std::string& text) {
    LeftOut leftOut;
    return SceneReader().readJson(text, leftOut);
}

template <typename Read>
std::string faultOf(Read read) {
    try {
        read();
    } catch (const Host::InputError& error) {
        return error.what();
    }
    return "";
}

std::string xmlFault(const std::string& text) {
    return faultOf([&] { readXml(text); });
}

std::string jsonFault(const std::string& text) {
    return faultOf([&] { readJson(text); });
}

const std::string emptyFrame = "<tt:Frame UtcTime=\"2026-05-01T12:00:00Z\"/>";

std::string nested(const std::string& open, const std::string& inside, const std::string& close,
                   int levels) {
    std::string text = inside;
    for (int i = 0; i < levels; ++i) {
        text.insert(0, open);
        text += close;
    }
    return text;
}

TEST(SceneReader, ReadsBothFormsAlike) {
    SceneReader reader;
    LeftOut fromXml;
    LeftOut fromJson;
    const Scene xml = reader.readXml(sample("car-park.xml"), fromXml);
    const Scene json = reader.readJson(sample("car-park.json"), fromJson);
    ASSERT_EQ(xml.size(), 2);
    EXPECT_EQ(toJson(xml), toJson(json));
    EXPECT_EQ(toXml(xml), toXml(json));
    EXPECT_EQ(fromXml.counts(), fromJson.counts());
}

TEST(SceneReader, ReadsEveryTerm) {
    const Scene scene = readXml(sample("car-park.xml"));
    ASSERT_EQ(scene.size(), 2);
    const SceneFrame& frame = scene[0];
    EXPECT_EQ(utcText(frame.time), "2026-05-01T12:00:00.250000Z");
    EXPECT_EQ(frame.source, "Gate");
    EXPECT_EQ(frame.transformation.translate, Eigen::Vector2d(-1.0, 1.0));
    EXPECT_EQ(frame.transformation.scale, Eigen::Vector2d(0.001, -0.002));
    ASSERT_EQ(frame.objects.size(), 2);

    const SceneObject& truck = frame.objects[0];
    EXPECT_EQ(truck.name.id, "9007199254740993");  // beyond the integers of a double
    EXPECT_EQ(truck.name.uuid, "b7c1f2d0-0001-4a00-8000-00000000aaaa");
    EXPECT_EQ(truck.transformation.translate, Eigen::Vector2d(500.0, 250.0));
    EXPECT_EQ(truck.transformation.scale, Eigen::Vector2d(1.0, 1.0));
    ASSERT_TRUE(truck.shape && truck.shape->box);
    EXPECT_EQ(truck.shape->box->bottom, 350.0);
    EXPECT_EQ(truck.shape->box->top, 100.0);
    EXPECT_EQ(truck.shape->box->left, 0.0);
    EXPECT_EQ(truck.shape->box->right, 200.0);
    EXPECT_EQ(truck.shape->centre, Eigen::Vector2d(100.0, 225.0));
    ASSERT_EQ(truck.shape->polygons.size(), 1);
    EXPECT_EQ(truck.shape->polygons[0].at(2), Eigen::Vector2d(100.0, 100.0));
    ASSERT_EQ(truck.colors.size(), 2);
    EXPECT_EQ(truck.colors[0].space, ColorSpace::Rgb);
    EXPECT_EQ(truck.colors[0].value[2], 120.0);
    EXPECT_EQ(truck.colors[0].weight, 0.7);
    EXPECT_EQ(truck.colors[0].likelihood, std::nullopt);
    EXPECT_EQ(truck.colors[1].space, ColorSpace::YCbCr);
    ASSERT_EQ(truck.classes.size(), 2);
    EXPECT_EQ(truck.classes[1].word, "Car");
    EXPECT_EQ(truck.classes[1].likelihood, 0.8);
    ASSERT_TRUE(truck.geo);
    EXPECT_EQ(truck.geo->latitude, 55.7);
    EXPECT_EQ(truck.geo->longitude, 13.2);
    ASSERT_EQ(truck.vehicleTypes.size(), 1);
    EXPECT_EQ(truck.vehicleTypes[0].word, "Truck");
    ASSERT_TRUE(truck.spherical);
    EXPECT_EQ(truck.spherical->distance, 21.5);
    EXPECT_EQ(truck.spherical->elevation, -12.0);
    EXPECT_EQ(truck.spherical->azimuth, 95.0);
    EXPECT_EQ(truck.speed, 4.25);
    ASSERT_TRUE(truck.direction);
    EXPECT_EQ(truck.direction->yaw, -90.0);
    EXPECT_FALSE(truck.isIdle || truck.isRemoved);

    const SceneObject& person = frame.objects[1];
    EXPECT_EQ(person.name.id, "8");
    ASSERT_EQ(person.classes.size(), 2);
    EXPECT_EQ(person.classes[0].word, "Human");
    EXPECT_EQ(person.classes[0].likelihood, 0.6);
    EXPECT_EQ(person.classes[1].word, "Pedestrian");
    EXPECT_EQ(person.classes[1].likelihood, 0.65);
    ASSERT_EQ(person.tops.size(), 1);
    EXPECT_EQ(person.tops[0].likelihood, 0.75);
    ASSERT_EQ(person.bottoms.size(), 1);
    EXPECT_EQ(person.bottoms[0].space, ColorSpace::Rgb);
    EXPECT_TRUE(person.isIdle);

    ASSERT_EQ(frame.renames.size(), 1);
    EXPECT_EQ(frame.renames[0].from.id, "3");
    EXPECT_EQ(frame.renames[0].to.id, "8");
    ASSERT_EQ(frame.splits.size(), 1);
    EXPECT_EQ(frame.splits[0].to.at(1).id, "6");
    ASSERT_EQ(frame.merges.size(), 1);
    EXPECT_EQ(frame.merges[0].from.at(1).id, "11");
    ASSERT_EQ(frame.deletes.size(), 2);
    EXPECT_EQ(frame.deletes[1].uuid, "b7c1f2d0-0001-4a00-8000-00000000bbbb");

    EXPECT_EQ(utcText(scene[1].time), "2026-05-01T12:00:00.300000Z");
    EXPECT_TRUE(scene[1].objects.at(0).isRemoved);
    EXPECT_TRUE(scene[1].transformation.isIdentity());
}

TEST(SceneReader, CountsWhatItHasNoPlaceFor) {
    LeftOut leftOut;
    SceneReader().readXml(sample("car-park.xml"), leftOut);
    using testing::Pair;
    EXPECT_THAT(leftOut.counts(),
                testing::ElementsAre(Pair("ColorCluster.x:Paint", 1), Pair("Frame.x:shift", 1),
                                     Pair("Object.Parent", 1), Pair("Tops.Category", 1),
                                     Pair("VehicleInfo.Brand", 1)));
}

TEST(SceneReader, CountsWholeKindsOfContents) {
    LeftOut leftOut;
    SceneReader().readXml(
        "<tt:MetadataStream xmlns:tt=\"http://www.onvif.org/ver10/schema\" "
        "xmlns:wsnt=\"http://docs.oasis-open.org/wsn/b-2\"><tt:PTZ/><tt:Event>"
        "<wsnt:NotificationMessage/></tt:Event><tt:SensorData/></tt:MetadataStream>",
        leftOut);
    SceneReader().readJson(
        jsonFrame(",\"PTZStatus\":{},\"SceneImage\":\"AAAA\",\"Extension\":{\"MotionInCells\":{}},"
                  "\"AspectRatioTransformation\":[{},{}]"),
        leftOut);
    for (const char* term :
         {"MetadataStream.PTZ", "MetadataStream.Event", "MetadataStream.SensorData",
          "Frame.PTZStatus", "Frame.SceneImage", "Frame.Extension"}) {
        EXPECT_EQ(leftOut.counts().count(term), 1) << term;
    }
    EXPECT_EQ(leftOut.counts().at("Frame.AspectRatioTransformation"), 2);
}

TEST(SceneReader, CountsAttributesThatItDoesNotKnow) {
    LeftOut leftOut;
    SceneReader().readJson(
        jsonFrame(",\"Object\":{\"@ObjectId\":1,\"Appearance\":{\"Shape\":{\"BoundingBox\":{"
                  "\"@left\":0,\"@top\":0,\"@right\":0,\"@bottom\":0,\"@depth\":1},"
                  "\"CenterOfGravity\":{\"@x\":0,\"@y\":0,\"@z\":0}},\"Class\":{\"Type\":{"
                  "\"@Likelihood\":1,\"@x:why\":0,\"#text\":\"Human\"}},\"Color\":{"
                  "\"ColorCluster\":{\"Color\":{\"@X\":0,\"@Y\":0,\"@Z\":0},\"Covariance\":{"
                  "\"@XX\":1}}},\"GeoLocation\":{\"@lat\":1,\"@lon\":2,\"@elevation\":3}},"
                  "\"Behaviour\":{\"Direction\":{\"@roll\":3,\"@pitch\":0}}}"),
        leftOut);
    for (const char* term :
         {"BoundingBox.depth", "CenterOfGravity.z", "Type.x:why", "ColorCluster.Covariance",
          "GeoLocation.elevation", "Direction.roll", "Direction without yaw"}) {
        EXPECT_EQ(leftOut.counts().count(term), 1) << term;
    }
    EXPECT_EQ(leftOut.counts().size(), 7);
}

TEST(SceneReader, CountsNoMoreThanSoManyTerms) {
    std::string members;
    for (int i = 0; i < 1000; ++i) {
        members += ",\"x:" + std::string(1000, 'y') + std::to_string(i) + "\":0";
        members += ",\"x:" + std::to_string(i) + "\":0";
    }
    LeftOut leftOut;
    SceneReader().readJson(jsonFrame(members), leftOut);
    EXPECT_EQ(leftOut.counts().size(), 129);
    std::uint64_t sum = 0;
    for (const auto& [term, count] : leftOut.counts()) {
        EXPECT_LE(term.size(), 80);
        sum += count;
    }
    EXPECT_EQ(sum, 2000);
}

TEST(SceneReader, TakesAnyPrefix) {
    // The default namespace.
    Scene scene = readXml(
        "<MetadataStream xmlns=\"http://www.onvif.org/ver10/schema\"><VideoAnalytics><Frame "
        "UtcTime=\"2026-05-01T12:00:00Z\"><Object ObjectId=\"5\"/></Frame></VideoAnalytics>"
        "</MetadataStream>");
    ASSERT_EQ(scene.at(0).objects.size(), 1);
    EXPECT_EQ(scene[0].objects[0].name.id, "5");
    // A prefix that means something else further in, and attributes with a prefix.
    scene = readXml(
        "<a:MetadataStream xmlns:a=\"http://www.onvif.org/ver10/schema\"><a:VideoAnalytics>"
        "<b:Frame xmlns:b=\"http://www.onvif.org/ver10/schema\" a:UtcTime=\"2026-05-01T12:00:00Z\">"
        "<a:Object xmlns:a=\"urn:other\" ObjectId=\"1\"/><b:Object b:ObjectId=\"2\"/>"
        "<a:Object ObjectId=\"3\"/></b:Frame></a:VideoAnalytics></a:MetadataStream>");
    ASSERT_EQ(scene.at(0).objects.size(), 2);
    EXPECT_EQ(scene[0].objects[0].name.id, "2");
    EXPECT_EQ(scene[0].objects[1].name.id, "3");
    // No prefix and no default namespace: not ONVIF's.
    scene = readXml(xmlDocument("<Frame UtcTime=\"2026-05-01T12:00:00Z\"/>"));
    EXPECT_THAT(scene, IsEmpty());
}

TEST(SceneReader, TakesFramesBareOrWrapped) {
    const std::string frame = "{\"@UtcTime\":\"2026-05-01T12:00:00Z\"}";
    EXPECT_EQ(readJson("{\"Frame\":" + frame + "}").size(), 1);
    EXPECT_EQ(readJson("{\"VideoAnalytics\":{\"Frame\":[" + frame + "," + frame + "]}}").size(), 2);
    EXPECT_EQ(
        readJson("{\"MetadataStream\":{\"VideoAnalytics\":{\"Frame\":" + frame + "}}}").size(), 1);
    EXPECT_EQ(readJson("{}").size(), 0);
    EXPECT_EQ(readXml(xmlDocument(emptyFrame + emptyFrame + emptyFrame)).size(), 3);
    EXPECT_EQ(readXml("<t:MetadataStream xmlns:t=\"http://www.onvif.org/ver10/schema\"/>").size(),
              0);
}

TEST(SceneReader, JoinsTextAroundComments) {
    const Scene scene = readXml(xmlDocument(
        "<tt:Frame UtcTime=\"2026-05-01T12:00:00Z\"><tt:Object ObjectId=\"1\"><tt:Appearance>"
        "<tt:Class><tt:Type> Hu<!-- <&x; -->man</tt:Type><tt:Type><![CDATA[Ani&mal]]></tt:Type>"
        "</tt:Class></tt:Appearance></tt:Object></tt:Frame>"));
    EXPECT_EQ(scene.at(0).objects.at(0).classes.at(0).word, "Human");
    EXPECT_EQ(scene.at(0).objects.at(0).classes.at(1).word, "Ani&mal");
}

TEST(SceneReader, TakesSphericalCoordinatesBesideTheAppearance) {
    const Scene scene = readJson(
        jsonFrame(",\"Object\":{\"@ObjectId\":1,\"SphericalCoordinate\":{\"@Distance\":7}}"));
    EXPECT_EQ(scene.at(0).objects.at(0).spherical->distance, 7.0);
}

TEST(SceneReader, TakesEverySpellingOfColourSpaces) {
    const std::pair<const char*, ColorSpace> spaces[] = {
        {"RGB", ColorSpace::Rgb},
        {"rgb", ColorSpace::Rgb},
        {"http://www.onvif.org/ver10/colorspace/RGB", ColorSpace::Rgb},
        {"YCbCr", ColorSpace::YCbCr},
        {"http://www.onvif.org/ver10/colorspace/YCbCr", ColorSpace::YCbCr},
        {"http://www.onvif.org/ver10/colorspace/CIELAB", ColorSpace::CieLab},
        {"http://www.onvif.org/ver10/colorspace/CIELUV", ColorSpace::Other},
        {"http://www.onvif.org/ver10/colorspace/HSV", ColorSpace::Other},
        {"", ColorSpace::Other}};
    const std::string color =
        ",\"Object\":{\"@ObjectId\":1,\"Appearance\":{\"Color\":{\"ColorCluster\":{\"Color\":{"
        "\"@X\":1,\"@Y\":2,\"@Z\":3";
    for (const auto& [name, space] : spaces) {
        const std::string attribute = std::string("\"@Colorspace\":\"") + name + "\"";
        const Scene own =
            readJson(jsonFrame(std::string(color).append(",").append(attribute).append("}}}}}")));
        EXPECT_EQ(own.at(0).objects.at(0).colors.at(0).space, space) << name;
        const Scene inherited =
            readJson(jsonFrame(std::string(",").append(attribute).append(color).append("}}}}}")));
        EXPECT_EQ(inherited.at(0).objects.at(0).colors.at(0).space, space) << name;
    }
    const Scene plain = readJson(jsonFrame(color + "}}}}}"));
    EXPECT_EQ(plain.at(0).objects.at(0).colors.at(0).space, ColorSpace::YCbCr);
}

TEST(SceneReader, ForgivesLikelihoodsRoundedBeyondOne) {
    const Scene scene = readJson(jsonFrame(
        ",\"Object\":{\"@ObjectId\":1,\"Appearance\":{\"Class\":{\"Type\":{\"@Likelihood\":"
        "1.0000001,\"#text\":\"Human\"}}}}"));
    EXPECT_EQ(scene.at(0).objects.at(0).classes.at(0).likelihood, 1.0);
}

TEST(SceneReader, NamesTheFieldAndTheReason) {
    const auto object = [](const std::string& members) {
        return jsonFrame(",\"Object\":[{\"@ObjectId\":1},{" + members + "}]");
    };
    const auto appearance = [&](const std::string& members) {
        return object("\"@ObjectId\":2,\"Appearance\":{" + members + "}");
    };
    const std::pair<std::string, const char*> faults[] = {
        {"{\"Frame\":[{}]}", "Frame[0].UtcTime: missing"},
        {jsonFrames("{\"@UtcTime\":\"yesterday\"}"),
         "Frame[0].UtcTime: expected a time such as 2026-05-01T12:00:00.25Z"},
        {jsonFrames("{\"@UtcTime\":12}"),
         "Frame[0].UtcTime: expected a time such as 2026-05-01T12:00:00.25Z"},
        {object("\"@UUID\":\"\""), "Frame[0].Object[1].ObjectId: missing, and so is UUID"},
        {object("\"@ObjectId\":1.5"), "Frame[0].Object[1].ObjectId: expected an integer or text"},
        {object("\"@ObjectId\":true"), "Frame[0].Object[1].ObjectId: expected an integer or text"},
        {object("\"@ObjectId\":1,\"@ObjectId\":2"), "Frame[0].Object[1].ObjectId: occurs twice"},
        {object("\"@ObjectId\":\"" + std::string(257, '7') + "\""),
         "Frame[0].Object[1].ObjectId: longer than 256 characters"},
        {object("\"@ObjectId\":{\"a\":1}"), "\"@ObjectId\": expected a value, found an object"},
        {object("\"@ObjectId\":[1]"), "\"@ObjectId\": expected a value, found an array"},
        {appearance("\"Shape\":[[]]"), "\"Shape\": expected a value, found an array"},
        {appearance("\"Shape\":{\"BoundingBox\":{\"@left\":0,\"@top\":0,\"@right\":0}}"),
         "Frame[0].Object[1].Appearance.Shape.BoundingBox.bottom: missing"},
        {appearance("\"Shape\":{\"BoundingBox\":{\"@left\":0,\"@bottom\":true}}"),
         "Frame[0].Object[1].Appearance.Shape.BoundingBox.bottom: expected a number, found "
         "\"true\""},
        {appearance("\"Shape\":{\"BoundingBox\":{\"@left\":\"NaN\"}}"),
         "Frame[0].Object[1].Appearance.Shape.BoundingBox.left: expected a number, found \"NaN\""},
        {appearance("\"Shape\":{\"BoundingBox\":{\"@left\":null}}"),
         "Frame[0].Object[1].Appearance.Shape.BoundingBox.left: expected a number, found nothing"},
        {appearance("\"Shape\":{\"BoundingBox\":{\"@left\":\"\\u001b[2J" + std::string(90, 'x') +
                    "\"}}"),
         "Frame[0].Object[1].Appearance.Shape.BoundingBox.left: expected a number, found "
         "\"\\u001b[2Jxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\""},
        {appearance("\"Shape\":{\"Polygon\":[{\"Point\":[]},{\"Point\":[{\"@x\":1,\"@y\":2},"
                    "{\"@x\":1}]}]}"),
         "Frame[0].Object[1].Appearance.Shape.Polygon[1].Point[1].y: missing"},
        {object("\"@ObjectId\":2,\"Appearance\":5"),
         "Frame[0].Object[1].Appearance: expected elements, found \"5\""},
        {object("\"@ObjectId\":2,\"Behaviour\":true"),
         "Frame[0].Object[1].Behaviour: expected elements, found \"true\""},
        {appearance("\"Shape\":\"round\""),
         "Frame[0].Object[1].Appearance.Shape: expected elements, found \"round\""},
        {appearance("\"SphericalCoordinate\":7"),
         "Frame[0].Object[1].Appearance.SphericalCoordinate: expected elements, found \"7\""},
        {object("\"@ObjectId\":2,\"@\\u001b[2J\":[]"),
         "\"@\\u001b[2J\": expected a value, found an array"},
        {appearance("\"Shape\":{},\"Shape\":{}"),
         "Frame[0].Object[1].Appearance.Shape: occurs twice"},
        {appearance("\"Shape\":[{},{}]"), "Frame[0].Object[1].Appearance.Shape: occurs twice"},
        {appearance("\"Class\":{\"Type\":{\"@Likelihood\":80,\"#text\":\"Human\"}}"),
         "Frame[0].Object[1].Appearance.Class.Type[0].Likelihood: 80 is not between -0.001 and "
         "1.001"},
        {appearance("\"Class\":{\"Type\":\"" + std::string(257, 'x') + "\"}"),
         "Frame[0].Object[1].Appearance.Class.Type[0]: longer than 256 characters"},
        {appearance("\"Color\":{\"ColorCluster\":{\"Weight\":1}}"),
         "Frame[0].Object[1].Appearance.Color.ColorCluster[0].Color: missing"},
        {appearance("\"GeoLocation\":{\"@lat\":91,\"@lon\":0}"),
         "Frame[0].Object[1].Appearance.GeoLocation.lat: 91 is not between -90 and 90"},
        {appearance("\"SphericalCoordinate\":{\"@Distance\":-1}"),
         "Frame[0].Object[1].Appearance.SphericalCoordinate.Distance: -1 is not between 0 and "
         "1000000"},
        {appearance("\"Transformation\":{\"Scale\":{\"@x\":0,\"@y\":1}}"),
         "Frame[0].Object[1].Appearance.Transformation.Scale.x: a scale of 0"},
        {object("\"@ObjectId\":2,\"Behaviour\":{\"Speed\":-3}"),
         "Frame[0].Object[1].Behaviour.Speed: -3 is not between 0 and 10000"},
        {object("\"@ObjectId\":2,\"Behaviour\":{\"Direction\":{\"@yaw\":\"north\"}}"),
         "Frame[0].Object[1].Behaviour.Direction.yaw: expected a number, found \"north\""},
        {jsonFrame(",\"ObjectTree\":{\"Rename\":{\"from\":{\"@ObjectId\":1}}}"),
         "Frame[0].ObjectTree.Rename[0].to: missing"},
        {jsonFrame(",\"ObjectTree\":{\"Merge\":{\"from\":{\"@ObjectId\":1},\"to\":[{\"@ObjectId\":"
                   "1},{\"@ObjectId\":2}]}}"),
         "Frame[0].ObjectTree.Merge[0].to: more than 1"},
        {jsonFrame(",\"ObjectTree\":{\"Delete\":{}}"),
         "Frame[0].ObjectTree.Delete[0].ObjectId: missing, and so is UUID"}};
    for (const auto& [text, fault] : faults) {
        EXPECT_EQ(jsonFault(text), fault) << text;
    }
    EXPECT_EQ(xmlFault(xmlDocument(emptyFrame + "<tt:Frame UtcTime=\"2026-05-01T12:00:00Z\">"
                                                "<tt:Object ObjectId=\"1\"><tt:Behaviour>"
                                                "<tt:Speed>fast</tt:Speed></tt:Behaviour>"
                                                "</tt:Object></tt:Frame>")),
              "MetadataStream[0].VideoAnalytics[0].Frame[1].Object[0].Behaviour.Speed: expected a "
              "number, found \"fast\"");
}

TEST(SceneReader, RefusesWhatIsNoJson) {
    for (const char* text :
         {"", " ", "{", "[]", "5", "null", "\"Frame\"", "{\"Frame\":[}", "{\"Frame\":[]} {}",
          "{\"Frame\":[{\"@UtcTime\":NaN}]}", "{\"a\":01}", "{\"a\":1e999}", "{\"a\":\"\xff\"}",
          "{\"a\":\"\\ud800\"}", "{'a':1}", "{\"a\":1,}", "{\"a\":tru}",
          "{\"a\":123456789012345678901234567890}"}) {
        EXPECT_NE(jsonFault(text), "") << text;
    }
    EXPECT_EQ(jsonFault("[]"), "expected an object");
    // Cut off anywhere, a message is refused as a whole.
    const std::string whole = sample("car-park.json");
    const std::size_t end = whole.rfind('}');
    for (std::size_t length = 0; length < end; length += 7) {
        EXPECT_NE(jsonFault(whole.substr(0, length)), "") << length;
    }
}

TEST(SceneReader, RefusesWhatIsNoXml) {
    for (const std::string& text :
         {std::string(), std::string(" "), std::string("{}"), std::string("<a"),
          std::string("<tt:MetadataStream"), std::string("<a></b>"), std::string("text"),
          xmlDocument("<tt:Frame>"), xmlDocument("</tt:Frame>"),
          xmlDocument("<tt:Frame UtcTime=5/>"), xmlDocument(std::string("\xff")),
          xmlDocument(emptyFrame) + xmlDocument(emptyFrame)}) {
        EXPECT_NE(xmlFault(text), "") << text;
    }
    EXPECT_THAT(xmlFault("<a>\n <b></a>"), StartsWith("line 2, column "));
    EXPECT_EQ(xmlFault("<x:Frame xmlns:x=\"http://www.onvif.org/ver10/schema\"/>"),
              "expected the element MetadataStream of http://www.onvif.org/ver10/schema");
    EXPECT_THAT(xmlFault("<x:MetadataStream xmlns:x=\"urn:other\"/>"), HasSubstr("expected"));
    EXPECT_THAT(xmlFault("<MetadataStream/>"), HasSubstr("expected"));
    EXPECT_EQ(xmlFault("<tt:MetadataStream/>"), "undeclared prefix \"tt\"");
    EXPECT_EQ(xmlFault(xmlDocument(emptyFrame) + "<b/>"), "text behind the document's element");
    const std::string whole = sample("car-park.xml");
    const std::size_t end = whole.rfind('<');
    for (std::size_t length = 0; length < end; length += 11) {
        EXPECT_NE(xmlFault(whole.substr(0, length)), "") << length;
    }
}

TEST(SceneReader, ExpandsNothing) {
    const std::string document = xmlDocument(emptyFrame);
    EXPECT_EQ(xmlFault("<!DOCTYPE a [<!ENTITY b \"c\">]>" + document),
              "document type declarations are not accepted");
    EXPECT_EQ(xmlFault("<!DOCTYPE a SYSTEM \"file:///etc/passwd\">" + document),
              "document type declarations are not accepted");
    EXPECT_EQ(xmlFault("<!ENTITY b \"c\">" + document),
              "document type declarations are not accepted");
    EXPECT_EQ(xmlFault(xmlDocument("<tt:Frame UtcTime=\"&lol;\"/>")),
              "references to entities are not accepted");
    EXPECT_EQ(xmlFault(xmlDocument("&amp&lt;")), "references to entities are not accepted");
    const Scene scene =
        readXml(xmlDocument("<!-- &lol; <!DOCTYPE --><tt:Frame UtcTime=\"2026-05-01T12:00:00Z\" "
                            "Source=\"&lt;&#65;&amp;&quot;&apos;&gt;\"/>"));
    EXPECT_EQ(scene.at(0).source, "<A&\"'>");
}

TEST(SceneReader, RefusesDeepNesting) {
    EXPECT_EQ(xmlFault(xmlDocument(nested("<tt:a>", "", "</tt:a>", 100'000))),
              "nested deeper than 64 levels");
    EXPECT_EQ(xmlFault(xmlDocument(nested("<tt:a>", "", "</tt:a>", 40))), "");
    EXPECT_NE(jsonFault(nested("{\"a\":", "1", "}", 100'000)), "");
    EXPECT_NE(jsonFault("{\"a\":" + std::string(1'000'000, '[')), "");
    EXPECT_EQ(jsonFault(nested("{\"a\":", "1", "}", 40)), "");
    // Elements of other namespaces are not entered.
    EXPECT_EQ(xmlFault(xmlDocument("<x:y xmlns:x=\"urn:x\">" + nested("<x:a>", "", "</x:a>", 1000) +
                                   "</x:y>")),
              "");
}

TEST(SceneReader, RefusesWhatIsTooLarge) {
    TextLimits limits;
    limits.bytes = 2000;
    limits.elements = 100;
    SceneReader reader(limits);
    LeftOut leftOut;
    const auto json = [&](const std::string& text) {
        return faultOf([&] { reader.readJson(text, leftOut); });
    };
    const auto xml = [&](const std::string& text) {
        return faultOf([&] { reader.readXml(text, leftOut); });
    };
    EXPECT_EQ(json(jsonFrame(",\"SceneImage\":\"" + std::string(2000, 'A') + "\"")),
              "larger than 2000 bytes");
    EXPECT_EQ(xml(xmlDocument(std::string(2000, ' '))), "larger than 2000 bytes");
    EXPECT_EQ(json("{\"a\":[" + std::string(400, ',')), "more than 100 values");
    std::string elements;
    for (int i = 0; i < 60; ++i) {
        elements += "<tt:a b=\"\"/>";
    }
    EXPECT_EQ(xml(xmlDocument(elements)), "more than 100 elements and attributes");
    EXPECT_EQ(xml(xmlDocument(elements.substr(0, elements.size() / 2))), "");
    // What follows is read as ever.
    EXPECT_EQ(json(jsonFrame("")), "");
    EXPECT_EQ(xml(xmlDocument(emptyFrame)), "");
}

TEST(SceneReader, TakesLargeMessagesAndGoesOn) {
    SceneReader reader;
    LeftOut leftOut;
    std::string image;
    image.resize(10'000'000, 'A');
    EXPECT_EQ(reader.readJson(jsonFrame(",\"SceneImage\":\"" + image + "\""), leftOut).size(), 1);
    EXPECT_EQ(reader
                  .readXml(xmlDocument("<tt:Frame UtcTime=\"2026-05-01T12:00:00Z\">"
                                       "<tt:SceneImage>" +
                                       image + "</tt:SceneImage></tt:Frame>"),
                           leftOut)
                  .size(),
              1);
    EXPECT_EQ(leftOut.counts().at("Frame.SceneImage"), 2);
    EXPECT_EQ(reader.readJson(sample("car-park.json"), leftOut).size(), 2);
    EXPECT_EQ(reader.readXml(sample("car-park.xml"), leftOut).size(), 2);
}

TEST(SceneReader, RefusesManyNamespaces) {
    std::string declarations;
    for (int i = 0; i < 100; ++i) {
        declarations += " xmlns:n" + std::to_string(i) + "=\"urn:n\"";
    }
    EXPECT_EQ(xmlFault(xmlDocument("<tt:Frame" + declarations + "/>")),
              "more than 64 declarations of namespaces");
}

}  // namespace
}  // namespace Veskar::Live
