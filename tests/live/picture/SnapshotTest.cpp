// SPDX-License-Identifier: Apache-2.0
// Pictures from an address, with a camera of our own.
#include <veskar-host/InputError.h>

#include "live/picture/Snapshot.h"
#include "live/support/SecretFile.h"
#include "live/transport/ListeningSocket.h"
#include "support/TemporaryDirectory.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const std::string shot = "\xff\xd8\xff\xe0 picture";

std::string answerOf(const std::string& status, const std::string& body,
                     const std::string& headers = "") {
    return "HTTP/1.1 " + status + "\r\nConnection: close\r\n" + headers +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Answers one request after the other with the given texts; then it is silent.
class FakeCamera {
public:
    explicit FakeCamera(std::vector<std::string> answers)
        : answers_(std::move(answers)), thread_([this] { serve(); }) {}
    ~FakeCamera() {
        isEnding_ = true;
        thread_.join();
    }
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

    std::string url() const {
        return "http://127.0.0.1:" + std::to_string(socket_.port()) + "/now.jpg";
    }
    /// Only after the answers have come.
    const std::vector<std::string>& requests() const { return requests_; }

private:
    void serve() {
        for (const std::string& answer : answers_) {
            const FileDescriptor connection = accept();
            if (!connection) {
                return;
            }
            requests_.push_back(requestOf(connection.get()));
            ::send(connection.get(), answer.data(), answer.size(), MSG_NOSIGNAL);
        }
        while (!isEnding_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    FileDescriptor accept() {
        pollfd watched{socket_.get(), POLLIN, 0};
        while (!isEnding_) {
            if (::poll(&watched, 1, 10) == 1) {
                return FileDescriptor(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            }
        }
        return FileDescriptor();
    }
    static std::string requestOf(int connection) {
        std::string request;
        std::array<char, 4096> piece{};
        while (request.find("\r\n\r\n") == std::string::npos) {
            const ssize_t count = ::recv(connection, piece.data(), piece.size(), 0);
            if (count <= 0) {
                break;
            }
            request.append(piece.data(), static_cast<std::size_t>(count));
        }
        return request;
    }

    const std::vector<std::string> answers_;
    std::vector<std::string> requests_;
    const ListeningSocket socket_ = ListeningSocket::tcp({"127.0.0.1", 0});
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

const std::atomic<bool> goesOn{false};

std::string faultOf(PictureSource& source) {
    try {
        source.next(goesOn);
    } catch (const Host::InputError& error) {
        return error.what();
    }
    return "";
}

TEST(Snapshot, IsAskedForEveryTime) {
    FakeCamera camera({answerOf("200 OK", shot), answerOf("200 OK", shot + " 2")});
    const auto source = makeSnapshot(camera.url(), "");
    EXPECT_EQ(source->next(goesOn)->bytes, shot);
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    const std::optional<Picture> second = source->next(goesOn);
    EXPECT_EQ(second->bytes, shot + " 2");
    // Between before and now, as far as two clocks can be compared.
    EXPECT_GE(second->time, std::chrono::duration<double>(before).count() - 1.0);
    EXPECT_THAT(camera.requests()[0], HasSubstr("GET /now.jpg HTTP/1.1\r\n"));
    EXPECT_THAT(camera.requests()[0], Not(HasSubstr("Authorization")));
}

TEST(Snapshot, AnswersTheCamerasDigest) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string secret =
        VeskarTest::secretFile(directory / "camera", "viewer", "hidden word");
    FakeCamera camera(
        {answerOf("401 Unauthorized", "",
                  "WWW-Authenticate: Digest realm=\"c\", nonce=\"n\", qop=\"auth\"\r\n"),
         answerOf("200 OK", shot)});
    EXPECT_EQ(makeSnapshot(camera.url(), secret)->next(goesOn)->bytes, shot);
    EXPECT_THAT(camera.requests(),
                ElementsAre(Not(HasSubstr("Authorization")),
                            testing::AllOf(HasSubstr("Authorization: Digest username=\"viewer\""),
                                           Not(HasSubstr("hidden")))));
    EXPECT_THROW(makeSnapshot(camera.url(), directory / "missing"), Host::InputError);
}

TEST(Snapshot, SaysWhyThereIsNone) {
    FakeCamera camera({answerOf("404 Not Found", shot),
                       answerOf("302 Found", shot, "Location: http://127.0.0.1:9/\r\n"),
                       answerOf("200 OK", "<html>"), answerOf("200 OK", ""),
                       answerOf("200 OK", shot + std::string(Picture::mostBytes, ' ')),
                       "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n" + shot, "garbage\r\n\r\n",
                       answerOf("200 OK", shot)});
    const auto source = makeSnapshot(camera.url(), "");
    EXPECT_EQ(faultOf(*source), "the camera answers 404");
    EXPECT_EQ(faultOf(*source), "the camera answers 302");
    EXPECT_EQ(faultOf(*source), "what the camera gives is neither JPEG nor PNG");
    EXPECT_EQ(faultOf(*source), "what the camera gives is neither JPEG nor PNG");
    EXPECT_EQ(faultOf(*source), "the camera's picture is larger than 8 MiB");
    EXPECT_THAT(faultOf(*source), HasSubstr("the camera gives no picture: "));
    EXPECT_THAT(faultOf(*source), HasSubstr("the camera gives no picture: "));
    EXPECT_EQ(source->next(goesOn)->bytes, shot);
}

TEST(Snapshot, EndsWhileTheCameraIsSilent) {
    FakeCamera camera({});
    const auto source = makeSnapshot(camera.url(), "");
    const std::atomic<bool> isEnding{true};
    EXPECT_THROW(source->next(isEnding), Host::InputError);
    EXPECT_THAT(faultOf(*source), HasSubstr("Timeout was reached"));
}

TEST(Snapshot, ReadsAFileWithItsTime) {
    const VeskarTest::TemporaryDirectory directory;
    std::ofstream(directory / "now.jpg") << shot;
    const auto hourAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
    std::filesystem::last_write_time(directory / "now.jpg", hourAgo);
    const auto picture = makeSnapshot("file://" + (directory / "now.jpg"), "")->next(goesOn);
    EXPECT_EQ(picture->bytes, shot);
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    EXPECT_NEAR(now.count() - picture->time, 3600.0, 60.0);
}

}  // namespace
}  // namespace Veskar::Live
