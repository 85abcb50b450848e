// SPDX-License-Identifier: Apache-2.0
#include "net/LocalDatagramSocket.h"
#include "support/DatagramReceiver.h"
#include "support/DescriptorLimit.h"
#include "support/SyslogCapture.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::LocalDatagramSocket;

namespace {

int usedFlags = 0;

class LocalDatagram : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = "/tmp/veskar-datagram-XXXXXX";
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        directory = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(directory); }

    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
    }

    SyslogCapture log;
    std::string directory;
};

}  // namespace

// The program's own definition takes the place of the C library's.
extern "C" ssize_t send(int descriptor, const void* data, std::size_t size, int flags) {
    usedFlags = flags;
    return sendto(descriptor, data, size, flags, nullptr, 0);
}

TEST_F(LocalDatagram, RaisesNoSignal) {
    const DatagramReceiver receiver(directory + "/socket");
    LocalDatagramSocket(directory + "/socket").send("quiet");
    EXPECT_EQ(usedFlags, MSG_NOSIGNAL);
}

TEST_F(LocalDatagram, ReachesTheReceiverAsOneDatagram) {
    DatagramReceiver receiver(directory + "/socket");
    const std::size_t before = openDescriptors();
    {
        const LocalDatagramSocket socket(directory + "/socket");
        ASSERT_TRUE(socket.isConnected());
        socket.send("first");
    }
    LocalDatagramSocket(directory + "/socket").send(std::string(10000, 'x'));
    EXPECT_THAT(receiver.receive(), ElementsAre("first", std::string(10000, 'x')));
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(LocalDatagram, IsSilentlyNotConnectedWithoutAReceiver) {
    const std::size_t before = openDescriptors();
    EXPECT_FALSE(LocalDatagramSocket(directory + "/socket").isConnected());
    { const DatagramReceiver gone(directory + "/socket"); }
    EXPECT_FALSE(LocalDatagramSocket(directory + "/socket").isConnected()) << "a leftover";
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(LocalDatagram, CutsThePathAfter107Bytes) {
    const std::string path = directory + "/" + std::string(106 - directory.size(), 'p');
    ASSERT_EQ(path.size(), 107U);
    DatagramReceiver receiver(path);
    LocalDatagramSocket(path).send("whole");
    LocalDatagramSocket(path + "beyond").send("cut");
    EXPECT_THAT(receiver.receive(), ElementsAre("whole", "cut"));
}

TEST_F(LocalDatagram, LogsASocketThatCannotBeMade) {
    const DatagramReceiver receiver(directory + "/socket");
    {
        const DescriptorLimit none(0);
        EXPECT_FALSE(LocalDatagramSocket(directory + "/socket").isConnected());
    }
    EXPECT_THAT(
        log.errors(),
        ElementsAre("Failed to create socket: " + std::string(std::strerror(EMFILE)) + "\n"));
}

TEST_F(LocalDatagram, LogsADatagramThatIsTooLong) {
    DatagramReceiver receiver(directory + "/socket");
    LocalDatagramSocket(directory + "/socket").send(std::string(16 << 20, 'x'));
    EXPECT_THAT(
        log.errors(),
        ElementsAre("Failed to send message: " + std::string(std::strerror(EMSGSIZE)) + "\n"));
    EXPECT_THAT(receiver.receive(), IsEmpty());
}

TEST_F(LocalDatagram, SurvivesAReceiverThatGoesAway) {
    auto receiver = std::make_unique<DatagramReceiver>(directory + "/socket");
    const LocalDatagramSocket socket(directory + "/socket");
    receiver.reset();
    socket.send("lost");
    EXPECT_THAT(
        log.errors(),
        ElementsAre("Failed to send message: " + std::string(std::strerror(ECONNREFUSED)) + "\n"));
}

// However long the queue is, it ends, and a receiver that hangs must not hold the sender for good.
TEST_F(LocalDatagram, GivesUpOnAReceiverThatHangs) {
    const DatagramReceiver receiver(directory + "/socket");
    const LocalDatagramSocket socket(directory + "/socket");
    for (int i = 0; i < 100000 && log.lines().empty(); ++i) {
        socket.send("unheard");
    }
    EXPECT_THAT(
        log.errors(),
        ElementsAre("Failed to send message: " + std::string(std::strerror(EAGAIN)) + "\n"));
}
