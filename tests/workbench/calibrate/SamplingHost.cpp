// SPDX-License-Identifier: Apache-2.0
#include "SamplingHost.h"

#include <veskar-host/FusionPipeline.h>
#include <veskar/HostApplication.h>

#include <cstring>
#include <optional>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace VeskarTest {

void fuseAndSendSamples(const KnownErrors& recording) {
    Veskar::setCalledFromHostApplication(true);
    Veskar::Host::FusionPipeline::Options options;
    options.asksForPosition = false;
    Veskar::Host::FusionPipeline pipeline(
        recording.header, Veskar::Config::defaults(), [](const Veskar::Host::FusedFrame&) {}, {},
        options);
    for (const Workbench::SensorFrame& frame : recording.frames) {
        pipeline.push(frame);
    }
    Veskar::setCalledFromHostApplication(std::nullopt);
}

void sendDatagram(const std::string& path, const std::string& text) {
    const int sender = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.data(), path.size());
    EXPECT_EQ(::sendto(sender, text.data(), text.size(), 0,
                       reinterpret_cast<const sockaddr*>(&address), sizeof address),
              static_cast<ssize_t>(text.size()));
    ::close(sender);
}

}  // namespace VeskarTest
