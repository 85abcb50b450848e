// SPDX-License-Identifier: Apache-2.0
// Metadata tracks of a real RTSP server.
#include <veskar-host/InputError.h>

#include "RtspServer.h"
#include "live/rtsp/RtspInput.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "live/support/SecretFile.h"
#include "live/transport/Acceptor.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <list>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using namespace VeskarTest;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using Veskar::FileDescriptor;
using Veskar::Host::InputError;

namespace {

using Documents = std::vector<std::string>;

const std::string connectFault = "input camera: cannot connect";
const std::string lossFault = "input camera: lost the connection";

/// @param size about how many bytes
std::string document(const std::string& name, std::size_t size = 0) {
    std::string text =
        "<?xml version=\"1.0\"?><tt:MetadataStream xmlns:tt=\"http://a/\"><tt:" + name;
    for (std::size_t i = 0; text.size() < size; ++i) {
        text += " a" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
    }
    return text + "/></tt:MetadataStream>";
}

const Documents some{document("one"), document("two")};

RtspOptions at(const std::string& url) {
    RtspOptions options;
    options.channel = "camera";
    options.url = url;
    options.firstRetry = 20ms;
    options.longestRetry = 200ms;
    return options;
}

class Rtsp : public testing::Test {
protected:
    bool until(const std::function<bool()>& condition) { return loopUntil(loop, condition); }
    /// Reads until a number of documents has come.
    bool received(std::size_t count) {
        return until([&] { return documents.texts.size() >= count; });
    }
    /// @return how often a fault has occurred
    std::uint64_t count(const std::string& cause) const {
        const auto counts = log.faults.counts();
        const auto found = counts.find(cause);
        return found == counts.end() ? 0 : found->second;
    }
    std::string secret(const std::string& user, const std::string& password) const {
        return secretFile(directory.file("credentials"), user, password);
    }

    const TemporaryDirectory directory;
    EventLoop loop;
    ToldFaults log;
    Received documents;
};

/// A server that takes connections and never answers.
class MuteServer {
public:
    explicit MuteServer(EventLoop& loop)
        : acceptor_(loop, ListeningSocket::tcp({"127.0.0.1", 0}), "mute", log_.faults,
                    [this](FileDescriptor client) { clients_.push_back(std::move(client)); }) {}

    std::string url() const { return "rtsp://127.0.0.1:" + std::to_string(acceptor_.port()) + "/"; }
    std::size_t clients() const { return clients_.size(); }

private:
    ToldFaults log_;
    std::list<FileDescriptor> clients_;
    Acceptor acceptor_;
};

}  // namespace

TEST_F(Rtsp, ReadsTheMetadataTrackOfACamera) {
    const RtspServer server(directory.file("documents"), some,
                            {{"tracks", "H264,VND.ONVIF.METADATA"}});
    for (const RtspTransport transport : {RtspTransport::Tcp, RtspTransport::Udp}) {
        documents = {};
        RtspOptions options = at(server.url());
        options.transport = transport;
        const RtspInput input(loop, options, log.faults, documents.receiver());
        ASSERT_TRUE(received(10));
        EXPECT_EQ(std::set<std::string>(documents.texts.begin(), documents.texts.end()),
                  std::set<std::string>(some.begin(), some.end()));
        EXPECT_THAT(documents.channels, Each("camera"));
        EXPECT_TRUE(std::is_sorted(documents.arrived.begin(), documents.arrived.end()));
        EXPECT_EQ(input.counters().messages, documents.texts.size());
        EXPECT_EQ(input.counters().bytes, documents.texts.size() * some[0].size());
        EXPECT_EQ(input.counters().connections, 1U);
        EXPECT_EQ(input.counters().publishers, 1U);
        EXPECT_EQ(input.counters().cut, 0U);
    }
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(Rtsp, JoinsDocumentsOfManyPackets) {
    const Documents large{document("large", 1000000)};
    const RtspServer server(directory.file("documents"), large,
                            {{"fragment", "1400"}, {"interval", "200"}});
    const RtspInput input(loop, at(server.url()), log.faults, documents.receiver());
    ASSERT_TRUE(received(3));
    EXPECT_THAT(documents.texts, Each(large[0]));
}

TEST_F(Rtsp, DropsDocumentsThatMissAPacket) {
    const RtspServer server(directory.file("documents"), some,
                            {{"fragment", "40"}, {"drop", "11"}});
    for (const RtspTransport transport : {RtspTransport::Tcp, RtspTransport::Udp}) {
        documents = {};
        RtspOptions options = at(server.url());
        options.transport = transport;
        options.reordering = 20ms;
        const RtspInput input(loop, options, log.faults, documents.receiver());
        ASSERT_TRUE(
            until([&] { return documents.texts.size() >= 20 && input.counters().cut >= 10; }));
        EXPECT_THAT(documents.texts, Each(testing::AnyOf(some[0], some[1])));
        EXPECT_EQ(input.counters().connections, 1U);
    }
    EXPECT_GE(count("input camera: lost packets"), 20U);
    EXPECT_THAT(log.told(), SizeIs(2)) << "lost packets, and documents without an end";
}

TEST_F(Rtsp, DropsDocumentsThatAreTooLong) {
    const RtspServer server(directory.file("documents"), {document("one"), document("two", 5000)});
    RtspOptions options = at(server.url());
    options.longest = 1000;
    const RtspInput input(loop, options, log.faults, documents.receiver());
    ASSERT_TRUE(until([&] { return documents.texts.size() > 3 && input.counters().tooLong > 3; }));
    EXPECT_THAT(documents.texts, Each(document("one")));
    EXPECT_THAT(log.told(),
                testing::ElementsAre("input camera: dropped a message: longer than 1000 bytes"));
}

TEST_F(Rtsp, ConnectsAgainWhenTheServerReturns) {
    RtspServer server(directory.file("documents"), some);
    for (const RtspTransport transport : {RtspTransport::Tcp, RtspTransport::Udp}) {
        server.kill();
        ToldFaults faults;
        documents = {};
        RtspOptions options = at(server.url());
        options.transport = transport;
        const RtspInput input(loop, options, faults.faults, documents.receiver());
        const auto failed = [&] {
            const auto counts = faults.faults.counts();
            return counts.count(connectFault) > 0 ? counts.at(connectFault) : 0;
        };
        ASSERT_TRUE(until([&] { return failed() >= 3; }));
        server.restart();
        ASSERT_TRUE(received(5)) << testing::PrintToString(faults.told());
        EXPECT_EQ(input.counters().connections, 1U);
        server.kill();
        ASSERT_TRUE(until([&] { return input.counters().publishers == 0; }));
        const std::size_t before = documents.texts.size();
        server.restart();
        ASSERT_TRUE(received(before + 5));
        EXPECT_EQ(input.counters().connections, 2U);
        EXPECT_THAT(faults.told(), SizeIs(2)) << "each cause once a minute";
        EXPECT_THAT(faults.told(), Contains(StartsWith(connectFault + ": ")));
        EXPECT_THAT(faults.told(), Contains(StartsWith(lossFault + ": ")));
    }
}

TEST_F(Rtsp, ShowsUserAndPassword) {
    for (const std::string scheme : {"basic", "digest"}) {
        documents = {};
        const RtspServer server(
            directory.file("documents"), some,
            {{"user", "reader"}, {"password", "open sesame"}, {"scheme", scheme}});
        RtspOptions options = at(server.url());
        options.credentials = secret("reader", "open sesame");
        const RtspInput input(loop, options, log.faults, documents.receiver());
        EXPECT_TRUE(received(5)) << scheme;
    }
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(Rtsp, TellsThatUserOrPasswordAreWrong) {
    const RtspServer server(
        directory.file("documents"), some,
        {{"user", "reader"}, {"password", "open sesame"}, {"scheme", "digest"}});
    {
        ToldFaults anonymous;
        const RtspInput input(loop, at(server.url()), anonymous.faults, documents.receiver());
        ASSERT_TRUE(until([&] { return !anonymous.told().empty(); }));
        EXPECT_THAT(anonymous.told(),
                    Contains(connectFault + ": the server asks for user and password"));
    }
    RtspOptions options = at(server.url());
    options.credentials = secret("reader", "open barley");
    const RtspInput input(loop, options, log.faults, documents.receiver());
    ASSERT_TRUE(until([&] { return count(connectFault) >= 3; }));
    EXPECT_EQ(log.told(), Documents{connectFault + ": the server refuses user and password"});
    EXPECT_EQ(input.counters().connections, 0U);
    secret("reader", "open sesame");
    EXPECT_TRUE(received(1)) << "the file is read again";
}

TEST_F(Rtsp, RefusesCredentialsThatCannotBeRead) {
    RtspOptions options = at("rtsp://127.0.0.1:1/");
    options.credentials = directory.file("none");
    EXPECT_THROW(RtspInput(loop, options, log.faults, documents.receiver()), InputError);
    const RtspServer server(directory.file("documents"), some,
                            {{"user", "reader"}, {"password", "x"}, {"scheme", "basic"}});
    options = at(server.url());
    options.credentials = secret("reader", "y");
    const RtspInput input(loop, options, log.faults, documents.receiver());
    ASSERT_TRUE(until([&] { return count(connectFault) >= 1; }));
    std::filesystem::permissions(options.credentials, std::filesystem::perms{0644});
    const std::uint64_t before = count(connectFault);
    ASSERT_TRUE(until([&] { return count(connectFault) >= before + 3; }));
    secret("reader", "x");
    EXPECT_TRUE(received(1));
}

TEST_F(Rtsp, TellsThatThereIsNoMetadata) {
    for (const auto& [tracks, reason] : std::vector<std::pair<std::string, std::string>>{
             {"H264", "the server has no track with metadata"},
             {"H264,VND.ONVIF.METADATA+GZIP", "the server has metadata in a compressed form only"},
             {"VND.ONVIF.METADATA.EXI.EXT", "the server has metadata in a compressed form only"}}) {
        const RtspServer server(directory.file("documents"), some, {{"tracks", tracks}});
        ToldFaults faults;
        const RtspInput input(loop, at(server.url()), faults.faults, documents.receiver());
        ASSERT_TRUE(until([&] { return !faults.told().empty(); }));
        EXPECT_THAT(faults.told()[0],
                    testing::AllOf(StartsWith(connectFault), testing::EndsWith(": " + reason)));
        EXPECT_EQ(input.counters().connections, 0U);
    }
    const RtspServer server(directory.file("documents"), some);
    ToldFaults faults;
    const RtspInput input(loop, at(server.url() + "/other"), faults.faults, documents.receiver());
    ASSERT_TRUE(until([&] { return !faults.told().empty(); }));
    EXPECT_THAT(faults.told()[0], HasSubstr("404"));
    EXPECT_THAT(documents.texts, IsEmpty());
}

TEST_F(Rtsp, LeavesAServerThatIsSilent) {
    const RtspServer server(directory.file("documents"), some);
    for (const RtspTransport transport : {RtspTransport::Tcp, RtspTransport::Udp}) {
        ToldFaults faults;
        documents = {};
        RtspOptions options = at(server.url());
        options.transport = transport;
        options.silence = 1s;
        const RtspInput input(loop, options, faults.faults, documents.receiver());
        ASSERT_TRUE(received(1));
        server.stop();
        ASSERT_TRUE(until([&] { return input.counters().publishers == 0; }));
        EXPECT_THAT(faults.told(), Contains(lossFault + ": the server is silent"));
        const std::size_t before = documents.texts.size();
        server.goOn();
        EXPECT_TRUE(received(before + 1));
    }
}

TEST_F(Rtsp, LeavesAServerThatDoesNotAnswer) {
    MuteServer server(loop);
    RtspOptions options = at(server.url());
    options.answerWithin = 1s;
    options.silence = 60s;
    {
        const RtspInput input(loop, options, log.faults, documents.receiver());
        ASSERT_TRUE(until([&] { return count(connectFault) == 1; }));
        ASSERT_TRUE(until([&] { return server.clients() == 2; }));
    }
    options.answerWithin = 60s;
    const RtspInput input(loop, options, log.faults, documents.receiver());
    ASSERT_TRUE(until([&] { return server.clients() == 3; }));
    // Ends in the midst of an attempt, without waiting for it.
}

TEST_F(Rtsp, GoesOnAfterAReceiverThatThrows) {
    const RtspServer server(directory.file("documents"), some);
    std::size_t calls = 0;
    const RtspInput input(loop, at(server.url()), log.faults, [&](const Message&) {
        ++calls;
        throw std::runtime_error("not today");
    });
    for (std::size_t thrown = 0; thrown < 3; ++thrown) {
        EXPECT_THROW(until([] { return false; }), std::runtime_error);
        EXPECT_EQ(calls, thrown + 1);
    }
    EXPECT_EQ(input.counters().messages, calls);
}
