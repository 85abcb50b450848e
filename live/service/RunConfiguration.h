// SPDX-License-Identifier: Apache-2.0
// What `veskar run` and `veskar record` are told: run.json.
#pragma once

#include <veskar-host/FrameRecorder.h>
#include <veskar-host/Installation.h>
#include <veskar/Track.h>

#include "live/clock/SensorClock.h"
#include "live/rtsp/RtspOptions.h"
#include "live/transport/FileOutput.h"
#include "live/transport/ListeningSocket.h"
#include "live/transport/MqttOptions.h"
#include "live/view/ViewSettings.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <sys/types.h>

namespace Veskar::Live {

/// A topic of a broker.
struct BrokerTopic {
    std::string broker;  ///< name of one of RunConfiguration::brokers
    std::string topic;   ///< of an input with wildcards
    int qos = 0;
    bool isRetained = false;  ///< of an output
};
/// Standard input or output.
struct StandardStream {};
/// A socket of the file system.
struct UnixPlace {
    std::string path;
    mode_t permissions = 0660;
};
/// A TCP port at which the program listens.
struct TcpPlace : NetworkPlace {};
/// A UDP port.
struct UdpPlace : NetworkPlace {};
/// A TCP server that the program connects to.
struct ServerPlace : NetworkPlace {};
/// An RTSP server, a camera usually.
struct RtspPlace {
    std::string url;          ///< without user and password
    std::string credentials;  ///< file with these; empty: none
    RtspTransport transport = RtspTransport::Tcp;
};
/// A file that is rotated.
struct FilePlace {
    std::string path;
    FileOutput::Rotation rotation;
};

/// Where the messages of a sensor come from.
using InputPlace = std::variant<StandardStream, UnixPlace, TcpPlace, UdpPlace, ServerPlace,
                                BrokerTopic, RtspPlace>;
/// Where messages go.
using OutputPlace = std::variant<StandardStream, FilePlace, UnixPlace, TcpPlace, BrokerTopic>;

/// How the messages of a sensor are written.
enum class SensorFormat { OnvifJson, OnvifXml, JsonLines };
/// How fused frames are written.
enum class TrackFormat { JsonLines, OnvifJson, OnvifXml, Events, Text };

/// A sensor.
struct SensorSettings {
    std::string name;
    Source source = VideoObject;
    SensorFormat format = SensorFormat::OnvifJson;
    InputPlace input;
    bool sharesInput = false;  ///< which carries the lines of another sensor, too
    SensorClock::Options clock;
    std::set<std::string> ignoredModules;  ///< by their name in ONVIF's Source
};

/// A way out for fused frames.
struct OutputSettings {
    std::string name;
    TrackFormat format = TrackFormat::JsonLines;
    OutputPlace to;
    double interval = 0.0;          ///< least time between messages, s; 0: no limit
    bool isConfirmedOnly = false;   ///< tracks that are not confirmed are left out
    std::set<std::string> classes;  ///< others are left out; empty: none is
    bool withTags = false;          ///< of the detection priority
};

/// Where the program tells how it fares.
struct StatusSettings {
    double interval = 10.0;                  ///< between the documents on the topic, s
    std::optional<BrokerTopic> topic;        ///< gets a document at each interval
    std::optional<UnixPlace> socket;         ///< gives each reader a document and ends
    std::optional<NetworkPlace> prometheus;  ///< gives the counters as Prometheus' text, over HTTP
};

/// Whether the program watches that the sensors look where the installation says.
struct WatchSettings {
    double window = 300.0;             ///< time whose objects are compared, s
    double limit = 1.0;                ///< what is tolerated, degrees
    std::optional<BrokerTopic> topic;  ///< gets a message when the installation moves
};

/// A broker by its name.
struct BrokerSettings {
    std::string name;
    MqttOptions options;
};

/// Where the sensors' frames are recorded.
struct RecordSettings {
    std::string path;
    Host::FrameRecorder::Options options;
};

/// The whole document.
struct RunConfiguration {
    Host::Installation installation;
    std::string installationFile;  ///< its path; empty: it stands in the document
    std::string fusion;  ///< path of the configuration of the fusion; empty: the shipped one
    std::vector<BrokerSettings> brokers;
    std::vector<SensorSettings> sensors;
    std::vector<OutputSettings> outputs;
    StatusSettings status;
    std::optional<RecordSettings> record;
    std::optional<ViewSettings> view;
    std::optional<WatchSettings> watch;

    /// @param text JSON text; docs/live-service.md describes it. An installation that it names is
    ///             read, too; no other file is.
    /// @return the configuration
    /// @throw InputError the first fault, as "sensors[1].latency: -1 is not between 0 and 60"
    static RunConfiguration parse(std::string_view text);
    /// Shows the view, where the document does not.
    /// @param address "HOST:PORT"; empty: that of the document, or the usual one
    /// @throw InputError why it cannot be used, as "view.address: ..."
    void showAt(const std::string& address);
};

}  // namespace Veskar::Live
