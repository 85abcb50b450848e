// SPDX-License-Identifier: Apache-2.0
// Calibration samples inside the host application; the path of this program makes it the host.
#include <veskar/AutocalibrationHandler.h>
#include <veskar/HostApplication.h>

#include "fusion/CalibrationScene.h"
#include "support/DatagramReceiver.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"

#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::AutocalibrationHandler;
using Veskar::Source;
using Veskar::SystemTrack;

namespace {

class CalibrationInTheHost : public testing::Test {
protected:
    CalibrationInTheHost()
        : path("/tmp/autocalibration.sock"),
          receiver(std::make_unique<DatagramReceiver>(path.get())) {}

    /// @return the datagrams that one radar frame causes
    std::vector<std::string> update(
        const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
        const std::vector<std::shared_ptr<Veskar::Track>>& videoTracks = {}) {
        handler.handleUpdate(systemTracks, videoTracks, 1500000000);
        return receiver->receive();
    }

    static std::string payload(const std::vector<int>& radarIds) {
        std::string text = R"({"radarTimestamp_ns":1500000000,"data":[)";
        for (std::size_t i = 0; i < radarIds.size(); ++i) {
            text += std::string(i == 0 ? "" : ",") + R"({"u_video":0,"v_video":0,"id_radar":)" +
                    std::to_string(radarIds[i]) + R"(,"r_radar":0})";
        }
        return text + "]}";
    }

    SyslogCapture log;
    SocketPath path;
    std::unique_ptr<DatagramReceiver> receiver;
    AutocalibrationHandler handler{makeCalibrationConfig()};
};

}  // namespace

TEST_F(CalibrationInTheHost, KnowsItsHost) {
    EXPECT_TRUE(Veskar::calledFromQWR());
}

TEST_F(CalibrationInTheHost, SendsOneDatagramPerFrame) {
    const int before = openedSockets();
    const auto track = makeCalibrationTrack(7);
    videoOf(*track).state(0) = 0.25;
    videoOf(*track).state(2) = -0.1;
    radarOf(*track).state(4) = 12.34567;
    const std::string expected =
        R"({"radarTimestamp_ns":1500000000,"data":[)"
        R"({"u_video":0.25,"v_video":-0.1,"id_radar":7,"r_radar":12.3457}]})";
    EXPECT_THAT(update({track}), ElementsAre(expected));
    EXPECT_THAT(update({track}), ElementsAre(expected));
    EXPECT_EQ(openedSockets(), before + 2) << "one socket each";
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(CalibrationInTheHost, PutsTheSamplesInTheOrderOfTheSystemTracks) {
    const auto unfit = makeCalibrationTrack(100);
    radarOf(*unfit).coastingTime = 0.1;
    EXPECT_THAT(
        update({makeCalibrationTrack(9), unfit, makeCalibrationTrack(3), makeCalibrationTrack(5)}),
        ElementsAre(payload({9, 3, 5})));
}

TEST_F(CalibrationInTheHost, SendsNothingWithoutSamples) {
    const int before = openedSockets();
    const auto unfit = makeCalibrationTrack();
    radarOf(*unfit).coastingTime = 0.1;
    EXPECT_THAT(update({}), IsEmpty());
    EXPECT_THAT(update({unfit}), IsEmpty());
    EXPECT_EQ(openedSockets(), before);
}

TEST_F(CalibrationInTheHost, StopsAfterElevenSamples) {
    std::vector<std::shared_ptr<SystemTrack>> tracks;
    std::vector<int> ids;
    for (int id = 1; id <= 20; ++id) {
        tracks.push_back(makeCalibrationTrack(id));
        if (id <= 11) {
            ids.push_back(id);
        }
    }
    EXPECT_THAT(update(tracks), ElementsAre(payload(ids)));
    tracks.resize(11);
    EXPECT_THAT(update(tracks), ElementsAre(payload(ids)));
    tracks.push_back(nullptr);
    EXPECT_THAT(update(tracks), ElementsAre(payload(ids))) << "later ones are not looked at";
    tracks.resize(10);
    ids.resize(10);
    EXPECT_THAT(update(tracks), ElementsAre(payload(ids)));
}

TEST_F(CalibrationInTheHost, EndsTheProcessOnAMissingSystemTrack) {
    EXPECT_EXIT(handler.handleUpdate({nullptr}, {}, 1), testing::KilledBySignal(SIGABRT), "");
}

TEST_F(CalibrationInTheHost, PassesTheVideoTracksOn) {
    const auto near = makeTrack(Source::VideoObject, 99);
    near->state(0) = 0.1;
    EXPECT_THAT(update({makeCalibrationTrack()}, {near}), IsEmpty());
}

TEST_F(CalibrationInTheHost, IsSilentWithoutTheService) {
    receiver.reset();
    handler.handleUpdate({makeCalibrationTrack()}, {}, 1);
    unlink(path.get().c_str());
    handler.handleUpdate({makeCalibrationTrack()}, {}, 1);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(CalibrationInTheHost, IsSwitchedOffByAToolThatSaysSo) {
    Veskar::setCalledFromHostApplication(false);
    AutocalibrationHandler tool(makeCalibrationConfig());
    Veskar::setCalledFromHostApplication(std::nullopt);
    const int before = openedSockets();
    tool.handleUpdate({makeCalibrationTrack()}, {}, 1);
    EXPECT_EQ(openedSockets(), before);
    EXPECT_THAT(receiver->receive(), IsEmpty());
}
