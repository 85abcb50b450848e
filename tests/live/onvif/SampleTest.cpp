// SPDX-License-Identifier: Apache-2.0
// The sample frame in ONVIF's own text, where that is beside the working tree: it is not part of
// this project. The forms that it takes are tested with the project's own sample, too.
#include "host/TestInstallation.h"
#include "live/onvif/Samples.h"
#include "live/onvif/SceneCodec.h"
#include "live/onvif/SceneMapper.h"

#include <iostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>

namespace Veskar::Live {
namespace {

/// The listings in the section "JSON over MQTT".
std::vector<std::string> listings() {
    pugi::xml_document book;
    const std::string text = VeskarTest::textOfFile(VeskarTest::onvifDirectory() + "Analytics.xml");
    if (!book.load_string(text.c_str(), pugi::parse_default | pugi::parse_ws_pcdata)) {
        return {};
    }
    std::vector<std::string> found;
    for (const pugi::xpath_node& place :
         book.select_nodes("//section[title='Example']/programlisting")) {
        found.emplace_back(place.node().child_value());
    }
    return found;
}

TEST(OnvifSample, ReadsAlikeInBothForms) {
    std::string xml;
    std::string json;
    for (const std::string& listing : listings()) {
        if (listing.find("MyClassifier") == std::string::npos) {
            continue;
        }
        if (trimmed(listing).front() == '<') {
            xml = trimmed(listing);
        } else if (trimmed(listing).front() == '{') {
            json = trimmed(listing);
        }
    }
    if (xml.empty() && json.empty()) {
        std::cout << "ONVIF's text is not in " << VeskarTest::onvifDirectory() << "\n";
        return;
    }
    SceneReader reader;
    LeftOut fromXml;
    LeftOut fromJson;
    const Scene scene = reader.readXml(xml, fromXml);
    EXPECT_EQ(toJson(reader.readJson(json, fromJson)), toJson(scene));
    EXPECT_EQ(fromXml.counts(), fromJson.counts());

    SceneMapper mapper(VeskarTest::testInstallation());
    const std::vector<StampedFrame> frames = mapper.map(scene, "");
    ASSERT_EQ(frames.size(), 1);
    ASSERT_EQ(frames[0].frame.tracks.size(), 1);
    const auto& report = std::get<Host::VideoReport>(frames[0].frame.tracks[0]);
    EXPECT_NEAR(report.box.left, -0.9375, 1e-6);
    EXPECT_NEAR(report.box.bottom, -0.875, 1e-6);
    EXPECT_NEAR(report.box.right, -0.6875, 1e-6);
    EXPECT_NEAR(report.box.top, -0.6666664, 1e-6);
    EXPECT_EQ(report.labels.objectClass.name, "human");
    EXPECT_EQ(report.labels.color.name, "white");  // as its own extension says
    EXPECT_THAT(fromXml.counts(), testing::Contains(testing::Key("Appearance.HumanFace")));
}

}  // namespace
}  // namespace Veskar::Live
