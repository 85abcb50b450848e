// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "Process.h"
#include "SamplingHost.h"
#include "calibrate/SampleSocket.h"

#include <chrono>
#include <cstring>
#include <memory>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Workbench;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

namespace {

class SampleSocketTest : public testing::Test {
protected:
    void send(const std::string& text) const { VeskarTest::sendDatagram(path, text); }
    static std::chrono::steady_clock::time_point in(std::chrono::milliseconds time) {
        return std::chrono::steady_clock::now() + time;
    }

    VeskarTest::TemporaryDirectory directory;
    std::string path = directory / "samples.sock";
};

}  // namespace

TEST_F(SampleSocketTest, ReceivesOneDatagramAfterTheOther) {
    SampleSocket socket(path);
    send("one");
    send("");
    send("three");
    EXPECT_EQ(socket.receive(in(std::chrono::minutes(1))), "one");
    EXPECT_EQ(socket.receive(in(std::chrono::minutes(1))), "");
    EXPECT_EQ(socket.receive(in(std::chrono::minutes(1))), "three");
    EXPECT_EQ(socket.receive(in(std::chrono::milliseconds(20))), std::nullopt);
}

TEST_F(SampleSocketTest, RemovesItsPath) {
    { const SampleSocket socket(path); }
    EXPECT_THAT(directory.names(), IsEmpty());
}

TEST_F(SampleSocketTest, ReplacesWhatAProgramHasLeftBehind) {
    const int left = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    ASSERT_EQ(::bind(left, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(left);
    SampleSocket socket(path);
    send("text");
    EXPECT_EQ(socket.receive(in(std::chrono::minutes(1))), "text");
}

TEST_F(SampleSocketTest, LeavesAnotherListenerAlone) {
    SampleSocket first(path);
    EXPECT_THAT([&] { SampleSocket second(path); },
                ThrowsMessage<InputError>(HasSubstr("another program listens there")));
    send("text");
    EXPECT_EQ(first.receive(in(std::chrono::minutes(1))), "text");
}

TEST_F(SampleSocketTest, LeavesFilesAlone) {
    VeskarTest::spill(path, "text");
    EXPECT_THAT([&] { SampleSocket socket(path); },
                ThrowsMessage<InputError>(HasSubstr("is there and no socket")));
    EXPECT_EQ(VeskarTest::slurp(path), "text");
}

TEST_F(SampleSocketTest, SaysWhyAPathCannotBeBound) {
    EXPECT_THAT([&] { SampleSocket socket(directory / "none/samples.sock"); },
                ThrowsMessage<InputError>(HasSubstr("No such file or directory")));
    EXPECT_THAT([&] { SampleSocket socket("/tmp/" + std::string(200, 'x')); },
                ThrowsMessage<InputError>(HasSubstr("too long")));
}
