// SPDX-License-Identifier: Apache-2.0
#include "net/LocalDatagramSocket.h"
#include "net/WaitBudget.h"
#include "support/DatagramReceiver.h"
#include "support/DescriptorLimit.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::LocalDatagramSocket;

namespace {

/// Arguments of the last system calls.
struct Request {
    std::array<int, 3> socket{};
    sockaddr_un address{};
    socklen_t addressLength = 0;
    int sendFlags = 0;
    int descriptorFlags = 0;  // at the time of sending
};
Request request;

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

// These definitions override those of the C library.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" int socket(int domain, int type, int protocol) noexcept {
    request.socket = {domain, type, protocol};
    return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

extern "C" int connect(int descriptor, const sockaddr* address, socklen_t length) {
    std::memset(&request.address, 0xff, sizeof(request.address));
    std::memcpy(&request.address, address, std::min<std::size_t>(length, sizeof(sockaddr_un)));
    request.addressLength = length;
    return static_cast<int>(syscall(SYS_connect, descriptor, address, length));
}

extern "C" ssize_t send(int descriptor, const void* data, std::size_t size, int flags) {
    request.sendFlags = flags;
    request.descriptorFlags = fcntl(descriptor, F_GETFD);
    return sendto(descriptor, data, size, flags, nullptr, 0);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

TEST_F(LocalDatagram, AsksForAPlainDatagramSocketThatNoOtherProgramInherits) {
    const DatagramReceiver receiver(directory + "/socket");
    LocalDatagramSocket(directory + "/socket").send("plain");
    EXPECT_THAT(request.socket, ElementsAre(AF_UNIX, SOCK_DGRAM, 0));
    EXPECT_EQ(request.descriptorFlags, FD_CLOEXEC);
}

TEST_F(LocalDatagram, ConnectsToAWholeAddressFilledUpWithZeros) {
    const DatagramReceiver receiver(directory + "/socket");
    const LocalDatagramSocket socket(directory + "/socket");
    EXPECT_EQ(request.addressLength, 110U);
    EXPECT_EQ(request.address.sun_family, AF_UNIX);
    std::string path = directory + "/socket";
    path.resize(108);
    EXPECT_EQ(std::string(request.address.sun_path, sizeof(request.address.sun_path)), path);
}

TEST_F(LocalDatagram, RaisesNoSignal) {
    const DatagramReceiver receiver(directory + "/socket");
    LocalDatagramSocket(directory + "/socket").send("quiet");
    EXPECT_EQ(request.sendFlags, MSG_NOSIGNAL);
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

// Queues are finite, and a receiver that hangs must not block the sender forever.
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

// Each wait is short; their sum must be bounded, too.
TEST_F(LocalDatagram, WaitsForHangingReceiversNoLongerThanTheThreadMay) {
    Veskar::WaitBudget::ofThisThread() = {};
    const DatagramReceiver receiver(directory + "/socket");
    for (int i = 0; i < 100000 && log.lines().empty(); ++i) {
        LocalDatagramSocket(directory + "/socket").send("fills the queue");
    }
    int waits = 1;
    for (; waits <= 16; ++waits) {
        LocalDatagramSocket(directory + "/socket").send("waits");
        if ((request.sendFlags & MSG_DONTWAIT) != 0) {
            break;
        }
    }
    EXPECT_LE(waits, 15) << "20 ms each, 300 ms together";
    EXPECT_EQ(request.sendFlags, MSG_NOSIGNAL | MSG_DONTWAIT);
    EXPECT_EQ(log.errors().back(),
              "Failed to send message: " + std::string(std::strerror(EAGAIN)) + "\n");
    Veskar::WaitBudget::ofThisThread() = {};
    LocalDatagramSocket(directory + "/socket").send("waits again");
    EXPECT_EQ(request.sendFlags, MSG_NOSIGNAL);
}
