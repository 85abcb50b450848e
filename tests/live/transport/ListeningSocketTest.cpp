// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "live/support/Client.h"
#include "live/transport/ListeningSocket.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using testing::HasSubstr;
using Veskar::FileDescriptor;
using Veskar::Host::InputError;
using namespace Veskar::Live;
using namespace VeskarTest;

namespace {

/// @return the message of the InputError that a call throws
template <typename Call>
std::string refusal(Call call) {
    try {
        call();
    } catch (const InputError& error) {
        return error.what();
    }
    return "none";
}

mode_t permissionsOf(const std::string& path) {
    struct stat status {};
    checked(::stat(path.c_str(), &status), "stat");
    return status.st_mode & 07777;
}

class ListeningSocketTest : public testing::Test {
protected:
    const TemporaryDirectory directory;
    const std::string path = directory.file("socket");
};

}  // namespace

TEST_F(ListeningSocketTest, HasThePermissionsAskedForWhateverTheUmask) {
    const mode_t before = ::umask(0077);
    {
        const ListeningSocket socket = ListeningSocket::atPath(path, 0660);
        EXPECT_EQ(permissionsOf(path), 0660U);
        EXPECT_NO_THROW(connectTo(path));
    }
    ::umask(0);
    {
        const ListeningSocket socket = ListeningSocket::atPath(path, 0600);
        EXPECT_EQ(permissionsOf(path), 0600U);
    }
    ::umask(before);
    EXPECT_FALSE(std::filesystem::exists(path)) << "the path is removed at the end";
}

TEST_F(ListeningSocketTest, ReplacesWhatAProgramThatEndedLeft) {
    {
        const FileDescriptor left(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(::bind(left.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
    }
    ASSERT_TRUE(std::filesystem::exists(path));
    const ListeningSocket socket = ListeningSocket::atPath(path, 0600);
    EXPECT_NO_THROW(connectTo(path));
}

TEST_F(ListeningSocketTest, LeavesASocketThatAProgramListensOn) {
    const ListeningSocket first = ListeningSocket::atPath(path, 0600);
    EXPECT_EQ(refusal([&] { ListeningSocket::atPath(path, 0600); }),
              path + ": another program listens there");
    EXPECT_NO_THROW(connectTo(path));
}

TEST_F(ListeningSocketTest, LeavesWhatIsNoSocket) {
    std::ofstream(path) << "precious";
    EXPECT_EQ(refusal([&] { ListeningSocket::atPath(path, 0600); }),
              path + ": is there and no socket");
    EXPECT_EQ(std::filesystem::file_size(path), 8U);
}

TEST_F(ListeningSocketTest, LeavesThePathToWhoeverHasReplacedIt) {
    std::optional<ListeningSocket> first(ListeningSocket::atPath(path, 0600));
    std::filesystem::remove(path);
    const ListeningSocket second = ListeningSocket::atPath(path, 0600);
    first.reset();
    EXPECT_NO_THROW(connectTo(path));
}

TEST_F(ListeningSocketTest, RefusesPathsThatNoSocketCanHave) {
    EXPECT_THAT(refusal([] { ListeningSocket::atPath("", 0600); }), HasSubstr("1 to 107 bytes"));
    EXPECT_THAT(refusal([&] { ListeningSocket::atPath(path + std::string(108, 'x'), 0600); }),
                HasSubstr("1 to 107 bytes"));
    EXPECT_THAT(refusal([&] { ListeningSocket::atPath(directory.file("no/socket"), 0600); }),
                HasSubstr("No such file or directory"));
}

TEST_F(ListeningSocketTest, ListensAtAnAddress) {
    const ListeningSocket socket = ListeningSocket::tcp({"127.0.0.1", 0});
    ASSERT_NE(socket.port(), 0);
    EXPECT_NO_THROW(connectTo(socket.port()));
    EXPECT_EQ(refusal([&] {
                  ListeningSocket::tcp({"localhost", socket.port()});
              }),
              "localhost:" + std::to_string(socket.port()) + ": Address already in use");
}

TEST_F(ListeningSocketTest, ListensAtAnInterface) {
    const ListeningSocket socket = ListeningSocket::tcp({"lo", 0});
    EXPECT_NO_THROW(connectTo(socket.port()));
    int device = 0;
    socklen_t length = sizeof device;
    char name[16] = {};
    length = sizeof name;
    ASSERT_EQ(::getsockopt(socket.get(), SOL_SOCKET, SO_BINDTODEVICE, name, &length), 0);
    EXPECT_STREQ(name, "lo");
}

TEST_F(ListeningSocketTest, NeverListensEverywhere) {
    EXPECT_EQ(refusal([] {
                  ListeningSocket::tcp({"0.0.0.0", 5000});
              }),
              "0.0.0.0:5000: is everywhere; name an interface or its address");
    EXPECT_EQ(refusal([] {
                  ListeningSocket::udp({"::", 5000});
              }),
              "[::]:5000: is everywhere; name an interface or its address");
}

TEST_F(ListeningSocketTest, RefusesWhatIsNoPlaceOfThisMachine) {
    EXPECT_EQ(refusal([] {
                  ListeningSocket::tcp({"nosuch0", 5000});
              }),
              "nosuch0:5000: is neither an address nor a network interface");
    EXPECT_THAT(refusal([] {
                    ListeningSocket::udp({"192.0.2.1", 5000});
                }),
                HasSubstr("192.0.2.1:5000: Cannot assign requested address"));
}

TEST(NetworkPlace, HasHostAndPort) {
    EXPECT_EQ(NetworkPlace::parse("127.0.0.1:5000").host, "127.0.0.1");
    EXPECT_EQ(NetworkPlace::parse("127.0.0.1:5000").port, 5000);
    EXPECT_EQ(NetworkPlace::parse("eth0:65535").host, "eth0");
    EXPECT_EQ(NetworkPlace::parse("[::1]:5000").host, "::1");
    for (const char* text :
         {"", ":", "5000", ":5000", "localhost", "localhost:", "localhost:x", "localhost:65536",
          "localhost:-1", "localhost:5 ", "::1:5000", "[]:1", "[::1]", "[::1"}) {
        EXPECT_EQ(refusal([&] { NetworkPlace::parse(text); }),
                  "\"" + std::string(text) + "\" is not HOST:PORT");
    }
}
