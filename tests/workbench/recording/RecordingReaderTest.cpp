// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Installation.h"
#include "Process.h"
#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"
#include "recording/RefusedFrame.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace {

const std::string goodVideo =
    R"({"source":"video","time":1.5,"received":1.6,"tracks":[{"id":3,"box":{"left":-0.1,"bottom":-0.5,"right":0.1,"top":0.2},"velocity":[0.1,0.2],"age":2.5,"coasting":0.1,"confirmed":false,"class":"human","classProbability":0.9,"color":"red","colorProbability":0.5}]})";
const std::string goodRadar =
    R"({"source":"radar","time":1.7,"tracks":[{"id":4,"range":20.5,"azimuth":-10,"speed":1.5,"direction":90}]})";

class RecordingReaderTest : public testing::Test {
protected:
    // Reads a recording with the given lines after its header.
    std::vector<Workbench::RecordingLine> read(const std::string& lines) const {
        return readFile(toJsonLine(VeskarTest::installation()) + lines);
    }
    std::vector<Workbench::RecordingLine> readFile(const std::string& text) const {
        VeskarTest::spill(path, text);
        Workbench::RecordingReader reader(path);
        std::vector<Workbench::RecordingLine> found;
        while (auto line = reader.next()) {
            found.push_back(std::move(*line));
        }
        return found;
    }
    // The error of lines after the header, without the file's name.
    std::string faultOf(const std::string& lines) const {
        return faultOfFile(toJsonLine(VeskarTest::installation()) + lines);
    }
    std::string faultOfFile(const std::string& text) const {
        try {
            readFile(text);
        } catch (const Veskar::Host::InputError& error) {
            const std::string message = error.what();
            EXPECT_THAT(message, StartsWith(path + ":"));
            return message.substr(path.size() + 1);
        }
        return "no fault";
    }

    VeskarTest::TemporaryDirectory directory;
    std::string path = directory / "recording.jsonl";
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

/// Two frames a second apart, truth between them, and an end.
std::string twoSeconds() {
    const auto radar = [](const char* time) {
        return std::string(R"({"source":"radar","time":)") + time + R"(,"tracks":[]})" + "\n";
    };
    return radar("10") + R"({"source":"truth","time":10.5,"objects":[]})" + "\n" + radar("11") +
           radar("12") + R"({"end":13})" + "\n";
}

TEST_F(RecordingReaderTest, KeepsAnExcerptAsIfThereWereNothingElse) {
    VeskarTest::spill(path, toJsonLine(VeskarTest::installation()) + twoSeconds());
    Workbench::RecordingReader reader(path);
    reader.keepOnly({0.25, 1.5});
    EXPECT_EQ(std::get<Workbench::TruthFrame>(*reader.next()).time, 10.5);
    EXPECT_EQ(std::get<Workbench::SensorFrame>(*reader.next()).time, 11.0);
    EXPECT_FALSE(reader.next());
    EXPECT_FALSE(reader.next());
    EXPECT_EQ(reader.end(), 11.5);

    // The digest is that of the same frames with the same end, whether truth is read or not.
    const std::string other = directory / "other.jsonl";
    VeskarTest::spill(other,
                      toJsonLine(VeskarTest::installation()) +
                          "{\"source\":\"radar\",\"time\":11,\"tracks\":[]}\n{\"end\":11.5}\n");
    Workbench::RecordingReader cut(other);
    while (cut.next()) {
    }
    EXPECT_EQ(reader.digest(), cut.digest());
    Workbench::RecordingReader withoutTruth(path, Workbench::TruthLines::Skip);
    withoutTruth.keepOnly({0.25, 1.5});
    while (withoutTruth.next()) {
    }
    EXPECT_EQ(withoutTruth.digest(), cut.digest());
    EXPECT_EQ(withoutTruth.end(), 11.5);
}

TEST_F(RecordingReaderTest, AnExcerptOfAllIsTheRecording) {
    VeskarTest::spill(path, toJsonLine(VeskarTest::installation()) + twoSeconds());
    Workbench::RecordingReader whole(path);
    Workbench::RecordingReader reader(path);
    reader.keepOnly({});
    int lines = 0;
    while (reader.next()) {
        whole.next();
        ++lines;
    }
    EXPECT_FALSE(whole.next());
    EXPECT_EQ(lines, 4);
    EXPECT_EQ(reader.digest(), whole.digest());
    EXPECT_EQ(reader.end(), 13.0);
}

TEST_F(RecordingReaderTest, RefusesAnExcerptWithoutAFrame) {
    VeskarTest::spill(path, toJsonLine(VeskarTest::installation()) + twoSeconds());
    Workbench::RecordingReader reader(path);
    reader.keepOnly({0.25, 0.75});
    EXPECT_TRUE(reader.next());  // the truth
    EXPECT_THAT([&] { reader.next(); }, testing::ThrowsMessage<Veskar::Host::InputError>(
                                            path + ": no sensor frame in the excerpt"));
}

}  // namespace

TEST_F(RecordingReaderTest, ReadsNativeReports) {
    const auto lines = read(goodVideo + "\n" + goodRadar + "\n");
    ASSERT_EQ(lines.size(), 2u);
    const auto& video = std::get<Workbench::SensorFrame>(lines[0]);
    EXPECT_EQ(video.source, Veskar::VideoObject);
    EXPECT_EQ(video.time, 1.5);
    EXPECT_EQ(video.received, 1.6);
    const auto& person = std::get<Workbench::VideoReport>(video.tracks.at(0));
    EXPECT_EQ(person.id, 3);
    EXPECT_EQ(person.box.bottom, -0.5);
    EXPECT_EQ(person.velocity, Eigen::Vector2d(0.1, 0.2));
    EXPECT_EQ(person.age, 2.5);
    EXPECT_EQ(person.coasting, 0.1);
    EXPECT_FALSE(person.confirmed);
    EXPECT_EQ(person.labels.objectClass.name, "human");
    EXPECT_EQ(person.labels.objectClass.probability, 0.9);
    EXPECT_EQ(person.labels.color.name, "red");
    EXPECT_EQ(person.labels.lowerClothingColor.name, "unknown");
    const auto& radar = std::get<Workbench::SensorFrame>(lines[1]);
    EXPECT_EQ(radar.received, 1.7);
    const auto& walker = std::get<Workbench::RadarReport>(radar.tracks.at(0));
    EXPECT_EQ(walker.range, 20.5);
    EXPECT_EQ(walker.azimuth, -10.0);
    EXPECT_EQ(walker.speed, 1.5);
    EXPECT_EQ(walker.direction, 90.0);
    EXPECT_TRUE(walker.confirmed);
}

TEST_F(RecordingReaderTest, ReadsReadyEstimatesFromEitherSensor) {
    const auto lines = read(
        R"({"source":"radar","time":1,"tracks":[{"id":1,"state":[1,2,3,4,5,6],"covariance":[1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21]}]})");
    const auto& frame = std::get<Workbench::SensorFrame>(lines.at(0));
    const auto& report = std::get<Workbench::ReadyEstimate>(frame.tracks.at(0));
    EXPECT_EQ(report.state[5], 6.0);
    EXPECT_EQ(report.covariance(0, 5), 6.0);
    EXPECT_EQ(report.covariance(5, 0), 6.0);
    EXPECT_EQ(report.covariance(1, 1), 7.0);
    EXPECT_EQ(report.covariance(5, 5), 21.0);
}

TEST_F(RecordingReaderTest, ReadsTruth) {
    const auto lines = read(
        R"({"source":"truth","time":1,"objects":[{"id":7,"class":"car","position":[10,-2],"velocity":[1,0],"size":[4,2,1.5],"centre":[11,-2],"radar":false}]})");
    const auto& object = std::get<Workbench::TruthFrame>(lines.at(0)).objects.at(0);
    EXPECT_EQ(object.id, 7);
    EXPECT_EQ(object.className, "car");
    EXPECT_EQ(object.position, Eigen::Vector2d(10.0, -2.0));
    EXPECT_EQ(object.size, Eigen::Vector3d(4.0, 2.0, 1.5));
    EXPECT_TRUE(object.inVideo);
    EXPECT_FALSE(object.inRadar);
}

TEST_F(RecordingReaderTest, PassesOverTruthUnreadWhenToldTo) {
    VeskarTest::spill(path, toJsonLine(VeskarTest::installation()) +
                                "{\"source\":\"truth\", and no more\n" + goodVideo + "\n");
    Workbench::RecordingReader reader(path, Workbench::TruthLines::Skip);
    EXPECT_TRUE(std::holds_alternative<Workbench::SensorFrame>(*reader.next()));
    EXPECT_FALSE(reader.next());
}

TEST_F(RecordingReaderTest, SkipsBlankLines) {
    EXPECT_EQ(read("\n" + goodVideo + "\n  \n" + goodRadar).size(), 2u);
}

TEST_F(RecordingReaderTest, ReadsTheEnd) {
    const std::string lines = goodVideo + "\n" + goodRadar + "\n";
    const auto readerOf = [&](const std::string& text) {
        VeskarTest::spill(path, toJsonLine(VeskarTest::installation()) + text);
        auto reader = std::make_unique<Workbench::RecordingReader>(path);
        EXPECT_TRUE(reader->next());
        EXPECT_TRUE(reader->next());
        EXPECT_FALSE(reader->end());
        EXPECT_FALSE(reader->next());
        return reader;
    };
    EXPECT_FALSE(readerOf(lines)->end());
    const auto whole = readerOf(lines + "{\"end\":2.5}\n\n");
    EXPECT_EQ(whole->end(), 2.5);
    EXPECT_NE(whole->digest(), readerOf(lines)->digest());
    // When the last frame was received, but not before.
    EXPECT_EQ(readerOf(lines + "{\"end\":1.7}\n")->end(), 1.7);
    EXPECT_EQ(faultOf(lines + "{\"end\":1.69}"),
              "4: end: 1.69 is before the last frame was received");
    EXPECT_EQ(faultOf("{\"end\":2}\n" + goodVideo), "3: a line behind the end of the recording");
    EXPECT_EQ(faultOf("{\"end\":2,\"begin\":1}"), "2: begin: unknown key");
    EXPECT_EQ(faultOf("{\"end\":\"now\"}"), "2: end: expected a number, found a string");
}

TEST_F(RecordingReaderTest, ReadsTheHeader) {
    Workbench::RecordingHeader header = VeskarTest::installation();
    header.name = "a name";
    header.site = Workbench::Site{10.0, 20.0, 30.0};
    header.epoch = 1620204790.5;
    header.seed = 9223372036854775807U;
    header.truth = Workbench::TruthKind::Incomplete;
    VeskarTest::spill(path, toJsonLine(header));
    const Workbench::RecordingReader reader(path);
    EXPECT_EQ(reader.header().name, "a name");
    EXPECT_EQ(reader.header().camera.mounting.pitch, 20.0);
    EXPECT_EQ(reader.header().camera.imageToRadians[1], 0.7853981633974483);
    EXPECT_EQ(reader.header().radar.mounting.position, header.radar.mounting.position);
    EXPECT_EQ(reader.header().site->longitude, 20.0);
    EXPECT_EQ(reader.header().epoch, 1620204790.5);
    EXPECT_EQ(reader.header().seed, 9223372036854775807U);
    EXPECT_EQ(reader.header().truth, Workbench::TruthKind::Incomplete);
}

TEST_F(RecordingReaderTest, RefusesASeedThatNotEveryReaderHolds) {
    Workbench::RecordingHeader header = VeskarTest::installation();
    header.seed = 9223372036854775808U;
    VeskarTest::spill(path, toJsonLine(header));
    try {
        const Workbench::RecordingReader reader(path);
        FAIL() << "a seed of 64 bits";
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_THAT(error.what(),
                    HasSubstr(":1: seed: expected an integer from 0 to 9223372036854775807"));
    }
}

TEST_F(RecordingReaderTest, RefusesWhatIsNoRecording) {
    EXPECT_EQ(faultOfFile(""), "1: the file is empty, expected the header of a recording");
    EXPECT_THAT(faultOfFile(std::string("\x7f\x45\x4c\x46\x02\x00\xff\xfe", 8)),
                StartsWith("1: no header of a recording: column 1: "));
    EXPECT_EQ(faultOfFile("[1, 2]\n"), "1: expected an object, found an array");
    EXPECT_EQ(faultOfFile("{}\n"), "1: format: missing");
    EXPECT_EQ(faultOfFile(R"({"format":"other","version":1})"),
              "1: format: expected \"veskar-recording\", found \"other\"");
}

TEST_F(RecordingReaderTest, RefusesAnotherVersion) {
    const std::string header = toJsonLine(VeskarTest::installation());
    EXPECT_EQ(faultOfFile(replaced(header, "\"version\":1", "\"version\":2")),
              "1: version: version 2 is not supported, this program reads version 1");
}

TEST_F(RecordingReaderTest, SaysWhatIsWrongWithTheHeader) {
    const std::string header = toJsonLine(VeskarTest::installation());
    EXPECT_EQ(faultOfFile(replaced(header, "\"rangeStd\":0.3", "\"rangeStd\":0.0")),
              "1: radar.rangeStd: 0 is below 1e-06");
    EXPECT_EQ(faultOfFile(replaced(header, "\"bdc\":false", "\"bdc\":0")),
              "1: camera.bdc: expected true or false, found a number");
    EXPECT_EQ(faultOfFile(replaced(header, "[1920,1080]", "[1920]")),
              "1: camera.resolution: expected 2 numbers, found 1");
    EXPECT_EQ(faultOfFile(replaced(header, "\"azimuthStd\"", "\"azimutStd\"")),
              "1: radar.azimutStd: unknown key");
    EXPECT_EQ(faultOfFile(replaced(header, "\"truth\":\"none\"", "\"truth\":\"some\"")),
              "1: truth: \"some\" is not none, incomplete or complete");
}

TEST_F(RecordingReaderTest, RefusesATruncatedLine) {
    EXPECT_THAT(faultOf(goodVideo + "\n" + goodRadar.substr(0, 40)),
                StartsWith("3: the line is cut off: column "));
}

TEST_F(RecordingReaderTest, RefusesGarbage) {
    EXPECT_THAT(faultOf("\xff\xfe\n"), StartsWith("2: column 1: syntax error"));
    EXPECT_EQ(faultOf("17\n"), "2: expected an object, found a number");
}

TEST_F(RecordingReaderTest, RefusesWrongTypes) {
    EXPECT_EQ(faultOf(replaced(goodRadar, "20.5", "\"far\"")),
              "2: tracks[0].range: expected a number, found a string");
    EXPECT_EQ(faultOf(replaced(goodRadar, "\"id\":4", "\"id\":4.5")),
              "2: tracks[0].id: expected an integer, found a fraction");
    EXPECT_EQ(faultOf(replaced(goodRadar, "\"id\":4", "\"id\":4294967296")),
              "2: tracks[0].id: does not fit into 32 bits");
    EXPECT_EQ(faultOf(replaced(goodVideo, "[0.1,0.2]", "[0.1,null]")),
              "2: tracks[0].velocity[1]: expected a number, found null");
    EXPECT_EQ(faultOf(replaced(goodVideo, "\"confirmed\":false", "\"confirmed\":0")),
              "2: tracks[0].confirmed: expected true or false, found a number");
    EXPECT_EQ(faultOf(R"({"source":"video","time":1,"tracks":{}})"),
              "2: tracks: expected an array, found an object");
    EXPECT_EQ(faultOf(R"({"source":"video","time":1,"tracks":[5]})"),
              "2: tracks[0]: expected an object, found a number");
}

TEST_F(RecordingReaderTest, RefusesWhatIsMissingOrMisspelt) {
    EXPECT_EQ(faultOf(R"({"time":1,"tracks":[]})"), "2: source: missing");
    EXPECT_EQ(faultOf(R"({"source":"video","tracks":[]})"), "2: time: missing");
    EXPECT_EQ(faultOf(replaced(goodRadar, "azimuth", "azimut")),
              "2: tracks[0].azimut: unknown key");
    EXPECT_EQ(faultOf(replaced(goodRadar, ",\"direction\":90", "")),
              "2: tracks[0].direction: missing; speed and direction go together");
    EXPECT_EQ(faultOf(replaced(goodRadar, "\"speed\":1.5,", "")),
              "2: tracks[0].speed: missing; speed and direction go together");
    EXPECT_THAT(faultOf(replaced(goodRadar, ",\"speed\":1.5,\"direction\":90", "")),
                StartsWith("2: tracks[0].radialSpeed: missing"));
}

TEST_F(RecordingReaderTest, RefusesUnknownSources) {
    EXPECT_EQ(faultOf(R"({"source":"lidar","time":1,"tracks":[]})"),
              "2: source: \"lidar\" is not video, radar or truth");
}

TEST_F(RecordingReaderTest, RefusesNumbersThatAreNotFinite) {
    EXPECT_THAT(faultOf(replaced(goodRadar, "20.5", "NaN")), HasSubstr("syntax error"));
    EXPECT_THAT(faultOf(replaced(goodRadar, "20.5", "-Infinity")), HasSubstr("syntax error"));
    EXPECT_EQ(faultOf(replaced(goodRadar, "20.5", "1e999") + "\n"),
              "2: number overflow parsing '1e999'");
}

TEST_F(RecordingReaderTest, RefusesValuesOutOfRange) {
    EXPECT_EQ(faultOf(replaced(goodRadar, "20.5", "-1")), "2: tracks[0].range: -1 is below 0");
    EXPECT_EQ(faultOf(replaced(goodVideo, "0.9", "1.5")),
              "2: tracks[0].classProbability: 1.5 is not between 0 and 1");
    EXPECT_EQ(faultOf(replaced(goodRadar, "\"speed\":1.5", "\"speed\":-1.5")),
              "2: tracks[0].speed: is negative");
    EXPECT_EQ(faultOf(replaced(goodVideo, "\"right\":0.1", "\"right\":-0.2")),
              "2: tracks[0].box.right: is left of left");
    EXPECT_EQ(faultOf(replaced(goodVideo, "\"top\":0.2", "\"top\":-0.6")),
              "2: tracks[0].box.top: is below bottom");
}

TEST_F(RecordingReaderTest, HandsOutARefusedFrameThatCouldBeRead) {
    using Workbench::RefusedFrame;
    const auto refused = [&](const std::string& line) -> std::pair<RefusedFrame::Cause, double> {
        try {
            read(line);
        } catch (const RefusedFrame& error) {
            return {error.cause, error.frame.time};
        }
        throw std::runtime_error("was not refused: " + line);
    };
    EXPECT_EQ(refused(replaced(goodVideo, "\"top\":0.2", "\"top\":-0.6")),
              std::make_pair(RefusedFrame::Cause::Box, 1.5));
    EXPECT_EQ(refused(R"({"source":"radar","time":5,"received":4,"tracks":[]})"),
              std::make_pair(RefusedFrame::Cause::Time, 5.0));
}

TEST_F(RecordingReaderTest, RefusesRepeatedIds) {
    EXPECT_EQ(
        faultOf(
            R"({"source":"radar","time":1,"tracks":[{"id":4,"range":2,"azimuth":0,"radialSpeed":0},{"id":4,"range":3,"azimuth":0,"radialSpeed":0}]})"),
        "2: tracks[1].id: 4 occurs twice in the frame");
    // The message names the first repeated id, not the smallest.
    std::string tracks;
    for (const char* id : {"7", "5", "9", "7", "5"}) {
        tracks += tracks.empty() ? "" : ",";
        tracks += replaced(R"({"id":4,"range":2,"azimuth":0,"radialSpeed":0})", "4", id);
    }
    EXPECT_EQ(faultOf(R"({"source":"radar","time":1,"tracks":[)" + tracks + "]}"),
              "2: tracks[3].id: 7 occurs twice in the frame");
}

TEST_F(RecordingReaderTest, RefusesTimeThatDoesNotRise) {
    EXPECT_EQ(faultOf(goodRadar + "\n" + goodRadar + "\n"),
              "3: time: 1.7 is not later than 1.7, the time of the radar frame before");
    EXPECT_EQ(faultOf(goodRadar + "\n" + goodVideo + "\n"),
              "3: received: 1.6 is before 1.7, when the frame before was received; frames stand in "
              "the order of their arrival");
    EXPECT_EQ(faultOf(replaced(goodVideo, "1.6", "1.4")),
              "2: received: 1.4 is before the time of the frame, 1.5");
    const std::string truth = R"({"source":"truth","time":1,"objects":[]})";
    EXPECT_EQ(faultOf(truth + "\n" + truth),
              "3: time: 1 is not later than 1, the time of the truth before");
}

TEST_F(RecordingReaderTest, RefusesAVarianceThatIsNotPositive) {
    EXPECT_EQ(
        faultOf(
            R"({"source":"video","time":1,"tracks":[{"id":1,"state":[1,2,3,4,5,6],"covariance":[1,0,0,0,0,0,1,0,0,0,0,0,0,0,0,1,0,0,1,0,1]}]})"),
        "2: tracks[0].covariance: variance 2 is not positive");
}

TEST_F(RecordingReaderTest, RefusesAFileThatIsNotThere) {
    try {
        const Workbench::RecordingReader reader(directory / "missing");
        FAIL();
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_EQ(std::string(error.what()), directory / "missing" + ": No such file or directory");
    }
}

TEST_F(RecordingReaderTest, RefusesAKeyThatOccursTwice) {
    const std::string truth =
        R"({"source":"truth","time":1,"objects":[{"id":1,"position":[1,2],"velocity":[0,0]}]})";
    EXPECT_EQ(
        faultOf(goodVideo + "\n" + replaced(goodRadar, "\"time\":1.7", "\"time\":1,\"time\":1.7")),
        "3: time: occurs twice");
    EXPECT_EQ(faultOf(replaced(goodRadar, "\"id\":4", "\"id\":4,\"range\":1")),
              "2: tracks[0].range: occurs twice");
    EXPECT_EQ(faultOf(replaced(goodVideo, "\"top\":0.2", "\"top\":0.2,\"left\":-0.2")),
              "2: tracks[0].box.left: occurs twice");
    EXPECT_EQ(faultOf(replaced(truth, "\"id\":1", "\"id\":1,\"id\":2")),
              "2: objects[0].id: occurs twice");
    const std::string header = toJsonLine(VeskarTest::installation());
    EXPECT_EQ(faultOfFile(replaced(header, "\"version\":1", "\"version\":1,\"version\":1")),
              "1: version: occurs twice");
    EXPECT_EQ(
        faultOfFile(replaced(header, "\"camera\":{", "\"camera\":{\"bdc\":true,\"bdc\":true,")),
        "1: camera.bdc: occurs twice");
}

TEST_F(RecordingReaderTest, RefusesAHeaderThatIsNestedTooDeep) {
    EXPECT_EQ(
        faultOfFile("{\"camera\":" + std::string(150000, '[') + std::string(150000, ']') + "}"),
        "1: nested more than 100 levels deep");
}
