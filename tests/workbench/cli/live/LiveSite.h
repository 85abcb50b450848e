// SPDX-License-Identifier: Apache-2.0
// What `veskar run` works with: a broker, a camera and a radar there, and who wants the tracks.
#pragma once

#include "Process.h"
#include "live/support/Broker.h"
#include "live/support/Client.h"
#include "live/support/MqttPeer.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace VeskarTest {

using Lines = std::vector<std::string>;

/// @return the lines of a text, without their ends
Lines linesOf(const std::string& text);

/// @return how often a text has a piece
std::size_t occurrences(const std::string& text, const std::string& piece);

/// @return so many million times the letter
std::string megabytes(std::size_t count, char letter);

/// @param errors standard error of the program
/// @return its lines but the one that a busy machine may add: that the program was kept waiting for
///         so long that a frame of a silent camera was made up for it, and its own came late
Lines warningsOf(const std::string& errors);

/// @return UNIX time, s
double utcNow();

/// @param frame of a recording, its time that of UNIX
/// @return the same as an ONVIF scene description in JSON
std::string onvifJson(const nlohmann::json& frame);

/// @param source "video" or "radar"
/// @param count objects
/// @return a frame of a recording, stamped now
nlohmann::json sensorFrame(const std::string& source, std::size_t count = 3);

/// @return the frames of a simulation of four seconds, as a recording has them
std::vector<nlohmann::json> simulatedFrames();

/// A site with a broker. By default, camera and radar publish scene descriptions there, and the
/// program tells how it fares at a socket.
class LiveSite : public testing::Test {
protected:
    using Clock = std::chrono::steady_clock;

    static constexpr const char* cameraTopic = "gate/onvif-mj/VideoAnalytics/main/people";
    static constexpr const char* radarTopic = "mast/onvif-mj/VideoAnalytics/main/tracks";

    explicit LiveSite(const Broker::Options& options = {}, const MqttPeer::Options& peer = {});

    std::string socketOf(const std::string& name) const { return directory_ / (name + ".socket"); }
    /// Gives the camera a socket for JSON Lines instead of a topic.
    void letCameraConnect();
    /// @param name of the output
    /// @param more members beside name, format and place
    void addOutput(const std::string& name, const std::string& format, const nlohmann::json& to,
                   const nlohmann::json& more = nlohmann::json::object());
    /// @return the path of the configuration, which is written now
    std::string configuration() const;

    /// Waits until the program runs.
    void awaitStart(const RunningProgram& program) const;
    /// @return the status document
    nlohmann::json status() const;
    using Condition = std::function<bool(const nlohmann::json& status)>;
    /// Waits until the status fulfils a condition.
    /// @return false when it does not within a minute
    bool until(const Condition& condition);
    /// As above, and calls something at 20 Hz meanwhile.
    bool meanwhile(const std::function<void()>& send, const Condition& condition);
    /// Lets both sensors publish at 20 Hz meanwhile.
    bool publishUntil(const Condition& condition, std::size_t objects = 3);
    /// Lets the camera write to its socket meanwhile, at 20 Hz.
    bool writeUntil(const Veskar::FileDescriptor& camera, const Condition& condition);
    /// Takes what comes at the broker until a condition holds.
    /// @return false when it does not within a minute
    bool heard(const std::function<bool()>& condition);
    /// Publishes the frames of both sensors once.
    void publish(std::size_t objects = 3);
    /// @return what the program has warned of by now
    static Lines warnings(const RunningProgram& program) { return warningsOf(program.errors()); }
    /// @return of so many frames of a sensor the program has said what became of them: it takes
    /// them or says why not. On a busy machine two may come at once, the later one by its stamp
    /// first, or too close together to be told apart.
    static std::uint64_t framesJudged(const nlohmann::json& sensor);
    /// Each accepted message was written, dropped, failed or waits.
    static void expectAccounted(const nlohmann::json& status);

    const TemporaryDirectory directory_;
    Broker broker_;
    MqttPeer peer_;
    nlohmann::json run_;
};

}  // namespace VeskarTest
