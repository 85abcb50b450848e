// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "RunText.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using VeskarTest::broker;
using VeskarTest::camera;
using VeskarTest::document;
using VeskarTest::installationText;
using VeskarTest::refusalOf;
using VeskarTest::withOutput;
using VeskarTest::withSensor;

std::string withStatus(const std::string& status) {
    return document(R"(,"brokers":[)" + broker + R"(],"sensors":[)" + camera + R"(],"status":)" +
                    status);
}
/// @param input further members of the sensor's input
std::string withTwoBrokers(const std::string& filter, const std::string& input) {
    return document(R"(,"brokers":[{"name":"north","host":"b"},)" + broker +
                    R"(],"sensors":[{"kind":"radar","format":"onvif-json","input":)" +
                    R"({"type":"mqtt","topic":")" + filter + "\"" + input + "}}]");
}

TEST(RunConfiguration, ReadsEverything) {
    const RunConfiguration run = RunConfiguration::parse(document(R"(,
        "fusion": "fusion.json",
        "brokers": [{"name": "site", "host": "broker.example", "port": 8884, "clientId": "veskar",
            "credentials": "/etc/veskar/broker", "protocol": "5", "keepAlive": 30,
            "tls": {"authorities": "/ca.pem", "certificate": "/c.pem", "key": "/k.pem"},
            "availability": "veskar/available"}],
        "sensors": [
            {"name": "gate", "kind": "camera", "format": "onvif-xml", "latency": 0.08,
             "synchronised": true, "clockLimit": 0.5, "lateAfter": 2, "takeLate": true,
             "takeRepeated": true, "takeReordered": true, "ignoredModules": ["faces"],
             "input": {"type": "connect", "address": "camera:5000"}},
            {"kind": "radar", "format": "json-lines",
             "input": {"type": "mqtt", "topic": "radar/+", "qos": 1}}],
        "outputs": [
            {"name": "log", "format": "json-lines", "interval": 0.5, "confirmedOnly": true,
             "classes": ["human", "car"], "tags": true,
             "to": {"type": "file", "path": "/tmp/a", "rotateAfter": 1000, "keptFiles": 2}},
            {"format": "events",
             "to": {"type": "mqtt", "broker": "site", "topic": "e", "qos": 2, "retain": true}},
            {"format": "onvif-json", "to": {"type": "unix", "path": "/tmp/s", "permissions": "0600"}},
            {"format": "onvif-xml", "to": {"type": "tcp", "address": "127.0.0.1:7000"}}],
        "status": {"interval": 2, "mqtt": {"topic": "status", "retain": true},
            "socket": {"path": "/tmp/status"}, "prometheus": "127.0.0.1:9100"},
        "record": {"path": "/tmp/r", "name": "gate", "licence": "ours", "rotateAfter": 5,
            "keptFiles": 1},
        "watch": {"window": 60, "limit": 0.5, "mqtt": {"topic": "moved", "qos": 1}})"));
    EXPECT_EQ(run.installation.camera.mounting.pitch, 20.0);
    EXPECT_EQ(run.fusion, "fusion.json");
    ASSERT_THAT(run.brokers, SizeIs(1));
    const MqttOptions& options = run.brokers[0].options;
    EXPECT_EQ(options.host, "broker.example");
    EXPECT_EQ(options.port, 8884);
    EXPECT_EQ(options.credentials, "/etc/veskar/broker");
    EXPECT_EQ(options.protocol, MqttProtocol::V5);
    EXPECT_EQ(options.keepAlive.count(), 30);
    EXPECT_EQ(options.tls->authorities, "/ca.pem");
    EXPECT_EQ(options.tls->key, "/k.pem");
    EXPECT_EQ(options.availability->topic, "veskar/available");
    ASSERT_THAT(run.sensors, SizeIs(2));
    const SensorSettings& gate = run.sensors[0];
    EXPECT_EQ(gate.source, VideoObject);
    EXPECT_EQ(gate.format, SensorFormat::OnvifXml);
    EXPECT_EQ(gate.clock.sensor, "gate");
    EXPECT_EQ(gate.clock.latency, 0.08);
    EXPECT_TRUE(gate.clock.isSynchronised);
    EXPECT_EQ(gate.clock.limit, 0.5);
    EXPECT_EQ(gate.clock.policy.lateAfter, 2.0);
    EXPECT_TRUE(gate.clock.policy.takesLate && gate.clock.policy.takesRepeated &&
                gate.clock.policy.takesReordered);
    EXPECT_THAT(gate.ignoredModules, ElementsAre("faces"));
    EXPECT_EQ(std::get<ServerPlace>(gate.input).host, "camera");
    EXPECT_EQ(run.sensors[1].name, "radar");
    EXPECT_EQ(std::get<BrokerTopic>(run.sensors[1].input).broker, "site");
    EXPECT_EQ(std::get<BrokerTopic>(run.sensors[1].input).qos, 1);
    ASSERT_THAT(run.outputs, SizeIs(4));
    EXPECT_EQ(run.outputs[0].interval, 0.5);
    EXPECT_TRUE(run.outputs[0].isConfirmedOnly && run.outputs[0].withTags);
    EXPECT_THAT(run.outputs[0].classes, ElementsAre("car", "human"));
    EXPECT_EQ(std::get<FilePlace>(run.outputs[0].to).rotation.after, 1000U);
    EXPECT_EQ(run.outputs[1].name, "events");
    EXPECT_TRUE(run.outputs[1].withTags);
    EXPECT_TRUE(std::get<BrokerTopic>(run.outputs[1].to).isRetained);
    EXPECT_EQ(std::get<UnixPlace>(run.outputs[2].to).permissions, mode_t{0600});
    EXPECT_EQ(std::get<TcpPlace>(run.outputs[3].to).port, 7000);
    EXPECT_EQ(run.status.interval, 2.0);
    EXPECT_EQ(run.status.topic->broker, "site");
    EXPECT_EQ(run.status.socket->path, "/tmp/status");
    EXPECT_EQ(run.status.prometheus->port, 9100);
    EXPECT_EQ(run.watch->window, 60.0);
    EXPECT_EQ(run.watch->limit, 0.5);
    EXPECT_EQ(run.watch->topic->broker, "site");
    EXPECT_EQ(run.watch->topic->topic, "moved");
    EXPECT_EQ(run.record->path, "/tmp/r");
    EXPECT_EQ(run.record->options.name, "gate");
    EXPECT_EQ(run.record->options.rotateAfter, 5U);
}

TEST(RunConfiguration, ReadsAnInstallationFromItsFile) {
    VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("installation.json");
    const std::string text = R"({"installation":")" + path + R"(","sensors":[{"kind":"radar",)" +
                             R"("format":"json-lines","input":{"type":"stdin"}}]})";
    EXPECT_THAT(refusalOf(text), testing::StartsWith("installation: " + path));
    std::ofstream(path) << installationText;
    EXPECT_EQ(RunConfiguration::parse(text).installation.radar.mounting.position[2], 4.6);
}

TEST(RunConfiguration, HearsWhatIsPublishedToAnotherBrokerOrTopic) {
    EXPECT_EQ(refusalOf(withOutput(R"({"format":"events","to":{"type":"mqtt","topic":"b/a"}})")),
              "");
    EXPECT_EQ(refusalOf(document(
                  R"(,"brokers":[{"name":"a","host":"a","availability":"x"},)"
                  R"({"name":"b","host":"b"}],"sensors":[{"kind":"radar","format":"onvif-json",)"
                  R"("input":{"type":"mqtt","broker":"b","topic":"#"}}])")),
              "");
}

TEST(RunConfiguration, NamesTheKeyOfEveryFault) {
    const std::string line = R"("format":"json-lines","input":{"type":"stdin"})";
    const std::vector<std::pair<std::string, std::string>> faults{
        {"{}", "installation: missing"},
        {document(""), "sensors: missing"},
        {document(R"(,"sensors":[])"), "sensors: names no sensor"},
        {document(R"(,"sensor":[])"), "sensor: unknown key"},
        {withSensor(R"({"kind":"lidar"})"), "sensors[0].kind: \"lidar\" is not camera or radar"},
        {withSensor(R"({"kind":"radar","format":"xml"})"),
         "sensors[0].format: \"xml\" is not onvif-json, onvif-xml or json-lines"},
        {withSensor(R"({"kind":"radar","latency":-1,)" + line + "}"),
         "sensors[0].latency: -1 is not between 0 and 60"},
        {withSensor(R"({"kind":"radar","synchronised":1,)" + line + "}"),
         "sensors[0].synchronised: expected true or false, found a number"},
        {withSensor(R"({"kind":"radar","ignoredModules":[1],)" + line + "}"),
         "sensors[0].ignoredModules: expected strings only"},
        {withSensor(R"({"kind":"radar","format":"json-lines","input":{"type":"tcp"}})"),
         "sensors[0].input.address: missing"},
        {withSensor(
             R"({"kind":"radar","format":"json-lines","input":{"type":"udp","address":"x"}})"),
         "sensors[0].input.address: "},
        {withSensor(
             R"({"kind":"radar","format":"json-lines","input":{"type":"stdin","path":"x"}})"),
         "sensors[0].input.path: unknown key"},
        {withSensor(camera), "sensors[0].input.broker: missing; there are no brokers"},
        {withTwoBrokers("a/#", ""),
         "sensors[0].input.broker: missing; say which of north, 127.0.0.1"},
        {withTwoBrokers("a/#", R"(,"broker":"south")"),
         "sensors[0].input.broker: \"south\" is none of the brokers; say which of north, "
         "127.0.0.1"},
        {withSensor(R"({"kind":"radar",)" + line + R"(},{"name":"b","kind":"radar",)" + line + "}"),
         "sensors[1].kind: an installation has one camera and one radar"},
        {withSensor(R"({"kind":"radar",)" + line +
                    R"(},{"kind":"camera","format":"onvif-json","input":{"type":"stdin"}})"),
         "sensors[1].input: standard input has another reader already; only sensors that write "
         "json-lines can share it"},
        {withSensor(R"({"name":"a","kind":"radar",)" + line + R"(},{"name":"a","kind":"camera",)" +
                    line + "}"),
         "sensors[1].name: \"a\" occurs twice"},
        {withOutput(R"({"format":"csv"})"),
         "outputs[0].format: \"csv\" is not json-lines, onvif-json, onvif-xml, events or text"},
        {withOutput(R"({"format":"events","interval":1,"to":{"type":"stdout"}})"),
         "outputs[0].interval: events have no rate limit: every one counts"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":""}})"),
         "outputs[0].to.topic: is empty"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":"a","qos":1.5}})"),
         "outputs[0].to.qos: expected an integer, found a fraction"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":"a","broker":"b"}})"),
         "outputs[0].to.broker: \"b\" is none of the brokers"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":"x/+/y"}})"),
         "outputs[0].to.topic: \"x/+/y\" is no topic to publish to: it has a wildcard (+ or #)"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":")" +
                    std::string(65536, 'x') + R"("}})"),
         "outputs[0].to.topic: \"xxx"},
        {withTwoBrokers("a/#/b", R"(,"broker":"north")"),
         "sensors[0].input.topic: \"a/#/b\" is no filter of topics: + stands for one level, # at "
         "the end for all further ones"},
        {withTwoBrokers("a+/b", R"(,"broker":"north")"),
         "sensors[0].input.topic: \"a+/b\" is no filter of topics"},
        {document(R"(,"brokers":[{"host":"a","availability":"b/#"}],"sensors":[])"),
         "brokers[0].availability: \"b/#\" is no topic to publish to"},
        {withStatus(R"({"mqtt":{"topic":"#"}})"),
         "status.mqtt.topic: \"#\" is no topic to publish to"},
        {withOutput(R"({"format":"events","to":{"type":"mqtt","topic":"a/events"}})"),
         "sensors[0].input.topic: \"a/#\" matches \"a/events\" of outputs[0].to, which is no "
         "sensor's"},
        {withStatus(R"({"mqtt":{"topic":"a/status"}})"),
         "sensors[0].input.topic: \"a/#\" matches \"a/status\" of status.mqtt, which is no "
         "sensor's"},
        {document(R"(,"brokers":[{"host":"b","availability":"a"}],"sensors":[)" + camera + "]"),
         "sensors[0].input.topic: \"a/#\" matches \"a\" of brokers[0].availability, which is no "
         "sensor's"},
        {withOutput(R"({"format":"events","to":{"type":"unix","path":"a","permissions":"8"}})"),
         "outputs[0].to.permissions: expected octal digits, as \"0660\""},
        {document(R"(,"brokers":[{"host":"a","tls":{"key":"k"}}],"sensors":[])"),
         "brokers[0].tls.certificate: missing; certificate and key go together"},
        {document(R"(,"brokers":[{"host":"a","password":"k"}],"sensors":[])"),
         "brokers[0].password: unknown key"},
        {document(R"(,"sensors":[{"kind":"radar",)" + line + R"(}],"status":{"interval":0})"),
         "status.interval: 0 is not between 0.1 and 86400"},
        {document(R"(,"sensors":[{"kind":"radar",)" + line +
                  R"(}],"status":{"prometheus":"192.0.2.1:9100"})"),
         "status.prometheus: \"192.0.2.1\" is not the loopback interface"},
        {document(R"(,"sensors":[{"kind":"radar",)" + line + R"(}],"watch":{"window":9})"),
         "watch.window: 9 is not between 10 and 3600"},
        {document(R"(,"sensors":[{"kind":"radar",)" + line + R"(}],"watch":{"limit":11})"),
         "watch.limit: 11 is not between 0.2 and 10"},
        {document(R"(,"brokers":[)" + broker + R"(],"sensors":[)" + camera +
                  R"(],"watch":{"mqtt":{"topic":"a/watch"}})"),
         "sensors[0].input.topic: \"a/#\" matches \"a/watch\" of watch.mqtt, which is no "
         "sensor's"},
        {document(R"(,"sensors":[{"kind":"radar",)" + line + R"(}],"record":{"path":""})"),
         "record.path: is empty"},
    };
    for (const auto& [text, fault] : faults) {
        EXPECT_THAT(refusalOf(text), testing::StartsWith(fault)) << text;
    }
}

}  // namespace
}  // namespace Veskar::Live
