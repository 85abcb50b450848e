// SPDX-License-Identifier: Apache-2.0
#include "live/view/ViewServer.h"

#include <veskar-host/InputError.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Veskar::Live {
namespace {

/// What the kernel keeps for a viewer that reads slowly, bytes: some states, not seconds of them.
constexpr int mostUnsent = 256 << 10;
/// What is asked for of a stream at a time, bytes.
constexpr std::size_t streamBlock = 16384;

struct DestroyResponse {
    void operator()(MHD_Response* response) const noexcept { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, DestroyResponse>;

struct FreeText {
    void operator()(char* text) const noexcept { MHD_free(text); }
};
using MHDText = std::unique_ptr<char, FreeText>;

std::string headerOf(MHD_Connection* connection, const char* name) {
    const char* value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
    return value != nullptr ? value : "";
}

/// By HTTP's basic authentication, with any user: browsers ask for it by themselves.
std::string passwordOf(MHD_Connection* connection) {
    char* text = nullptr;
    const MHDText user(MHD_basic_auth_get_username_password(connection, &text));
    const MHDText password(text);
    return password ? password.get() : "";
}

/// For every answer: nothing is kept, guessed, framed, or read by pages from elsewhere.
void addHeaders(MHD_Response* response, const char* type) {
    const std::array<std::array<const char*, 2>, 7> headers{
        {{MHD_HTTP_HEADER_CONTENT_TYPE, type},
         {MHD_HTTP_HEADER_CACHE_CONTROL, "no-store"},
         {"Content-Security-Policy", "frame-ancestors 'none'"},
         {"Cross-Origin-Opener-Policy", "same-origin"},
         {"Cross-Origin-Resource-Policy", "same-origin"},
         {"Referrer-Policy", "no-referrer"},
         {"X-Content-Type-Options", "nosniff"}}};
    for (const auto& [name, value] : headers) {
        MHD_add_response_header(response, name, value);
    }
}

Response responseOf(const std::string& text, const char* type, MHD_ResponseMemoryMode mode) {
    // The library takes a pointer that is not const, and does not write to it.
    Response response(MHD_create_response_from_buffer(
        text.size(),
        const_cast<char*>(text.data()),  // NOLINT(cppcoreguidelines-pro-type-const-cast)
        mode));
    if (response) {
        addHeaders(response.get(), type);
    }
    return response;
}

/// Keeps the picture until it has been sent, and copies nothing.
Response responseOf(const std::shared_ptr<const Picture>& picture) {
    using Kept = std::shared_ptr<const Picture>;
    auto kept = std::make_unique<Kept>(picture);
    Response response(MHD_create_response_from_buffer_with_free_callback_cls(
        picture->bytes.size(),
        const_cast<char*>(picture->bytes.data()),  // NOLINT(cppcoreguidelines-pro-type-const-cast)
        [](void* owned) { const std::unique_ptr<Kept> end(static_cast<Kept*>(owned)); },
        kept.get()));
    if (response) {
        static_cast<void>(kept.release());  // the response releases it
        addHeaders(response.get(), mediaTypeOf(picture->bytes));
    }
    return response;
}

MHD_Result refuse(MHD_Connection* connection, unsigned status, const std::string& reason) {
    const Response response =
        responseOf(reason + "\n", "text/plain; charset=utf-8", MHD_RESPMEM_MUST_COPY);
    if (!response) {
        return MHD_NO;
    }
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED) {
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_ALLOW, "GET");
    }
    if (status == MHD_HTTP_UNAUTHORIZED) {
        MHD_add_response_header(response.get(), MHD_HTTP_HEADER_WWW_AUTHENTICATE,
                                "Basic realm=\"veskar\", charset=\"UTF-8\"");
    }
    return MHD_queue_response(connection, status, response.get());
}

/// A connection that waits, of a socket that the library closes.
int duplicateOf(const ListeningSocket& socket) {
    return ::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0);
}

}  // namespace

/// No exception may pass through the library.
struct ViewServer::Glue {
    /// A stream that the library reads from.
    struct Stream {
        ViewServer& server;
        std::list<Viewer>::iterator viewer;
    };

    static MHD_Result handle(void* server, MHD_Connection* connection, const char* path,
                             const char* method, const char* /*version*/, const char* /*upload*/,
                             std::size_t* uploadSize, void** request) {
        static char hasHeaders = 0;
        if (*request == nullptr) {
            *request = &hasHeaders;  // the answer follows when the request is complete
            return MHD_YES;
        }
        if (*uploadSize != 0) {
            return MHD_NO;  // nobody may send anything
        }
        try {
            return static_cast<ViewServer*>(server)->answer(connection, path, method) == MHD_YES
                       ? MHD_YES
                       : MHD_NO;
        } catch (const std::exception&) {
            return MHD_NO;
        }
    }

    static ssize_t read(void* stream, std::uint64_t /*position*/, char* buffer, std::size_t size) {
        const auto& [server, viewer] = *static_cast<Stream*>(stream);
        if (server.isEnding_) {
            return MHD_CONTENT_READER_END_OF_STREAM;
        }
        try {
            const std::size_t count = viewer->read(server.news_, buffer, size);
            if (count == 0) {
                viewer->isWaiting = true;
                MHD_suspend_connection(viewer->connection());
            }
            return static_cast<ssize_t>(count);
        } catch (const std::exception&) {
            return MHD_CONTENT_READER_END_WITH_ERROR;
        }
    }

    static void close(void* stream) {
        const std::unique_ptr<Stream> owned(static_cast<Stream*>(stream));
        owned->server.audience_.remove(owned->viewer->subject());
        owned->server.viewers_.erase(owned->viewer);
    }
};

void ViewServer::StopDaemon::operator()(MHD_Daemon* daemon) const noexcept {
    MHD_stop_daemon(daemon);
}

ViewServer::ViewServer(const NetworkPlace& place, Admission admission, std::string page,
                       const std::string& hello, ViewMailbox& mailbox, Audience& audience)
    : admission_(std::move(admission)),
      page_(std::move(page)),
      mailbox_(mailbox),
      audience_(audience),
      news_(hello) {
    const ListeningSocket socket = ListeningSocket::tcp(place);
    port_ = socket.port();
    // Connections inherit both.
    const int yes = 1;
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDBUF, &mostUnsent, sizeof mostUnsent);
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    daemon_.reset(MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
                                   &Glue::handle, this, MHD_OPTION_LISTEN_SOCKET,
                                   duplicateOf(socket), MHD_OPTION_CONNECTION_LIMIT,
                                   mostConnections, MHD_OPTION_CONNECTION_TIMEOUT, patience,
                                   MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 1, MHD_OPTION_END));
    if (!daemon_) {
        throw Host::InputError("view", Host::InputError("the server cannot be started"));
    }
    thread_ = std::thread([this] { serve(); });
    ::pthread_setname_np(thread_.native_handle(), "view");
}

ViewServer::~ViewServer() {
    isEnding_ = true;
    mailbox_.wake();
    thread_.join();
}

void ViewServer::serve() {
    const MHD_DaemonInfo* info = MHD_get_daemon_info(daemon_.get(), MHD_DAEMON_INFO_EPOLL_FD);
    std::array<pollfd, 2> watched{
        {{info->epoll_fd, POLLIN, 0}, {mailbox_.descriptor(), POLLIN, 0}}};
    while (!isEnding_) {
        constexpr MHD_UNSIGNED_LONG_LONG longestWait = 1000;  // ms
        MHD_UNSIGNED_LONG_LONG wait = longestWait;
        if (MHD_get_timeout(daemon_.get(), &wait) != MHD_YES) {
            wait = longestWait;
        }
        ::poll(watched.data(), watched.size(), static_cast<int>(std::min(wait, longestWait)));
        takeNews();
        MHD_run(daemon_.get());
    }
    resumeViewers();
    MHD_run(daemon_.get());  // the streams end
    daemon_.reset();
}

void ViewServer::takeNews() {
    news_.add(mailbox_.take());
    resumeViewers();
}

void ViewServer::resumeViewers() {
    for (Viewer& viewer : viewers_) {
        if (viewer.isWaiting && (isEnding_ || viewer.isBehind(news_))) {
            viewer.isWaiting = false;
            MHD_resume_connection(viewer.connection());
        }
    }
}

int ViewServer::answer(MHD_Connection* connection, const std::string& path,
                       const std::string& method) {
    switch (admission_.judge(headerOf(connection, MHD_HTTP_HEADER_HOST), passwordOf(connection))) {
        case Admission::Verdict::WrongHost:
            return refuse(connection, MHD_HTTP_MISDIRECTED_REQUEST,
                          "Call this machine by its address, or by a name of \"names\".");
        case Admission::Verdict::NoToken:
            return refuse(connection, MHD_HTTP_UNAUTHORIZED, "The password is the token.");
        case Admission::Verdict::Granted:
            break;
    }
    if (method != MHD_HTTP_METHOD_GET) {
        return refuse(connection, MHD_HTTP_METHOD_NOT_ALLOWED, "Only GET.");
    }
    if (path == "/events") {
        return openStream(connection);
    }
    if (path == "/picture") {
        return sendPicture(connection);
    }
    if (path != "/") {
        return refuse(connection, MHD_HTTP_NOT_FOUND, "There is one page: /");
    }
    const Response response = responseOf(page_, "text/html; charset=utf-8", MHD_RESPMEM_PERSISTENT);
    return response ? MHD_queue_response(connection, MHD_HTTP_OK, response.get()) : MHD_NO;
}

int ViewServer::sendPicture(MHD_Connection* connection) const {
    if (!news_.picture()) {
        return refuse(connection, MHD_HTTP_NOT_FOUND, "There is no picture.");
    }
    const Response response = responseOf(news_.picture());
    return response ? MHD_queue_response(connection, MHD_HTTP_OK, response.get()) : MHD_NO;
}

int ViewServer::openStream(MHD_Connection* connection) {
    if (viewers_.size() >= mostViewers) {
        return refuse(connection, MHD_HTTP_SERVICE_UNAVAILABLE, "Too many viewers.");
    }
    const char* selected = MHD_lookup_connection_value(connection, MHD_GET_ARGUMENT_KIND, "select");
    std::optional<Subject> subject;
    if (selected != nullptr) {
        subject = Subject::parse(selected);
        if (!subject) {
            return refuse(connection, MHD_HTTP_BAD_REQUEST,
                          "select is system:ID, video:ID or radar:ID");
        }
    }
    auto stream = std::make_unique<Glue::Stream>(
        Glue::Stream{*this, viewers_.emplace(viewers_.end(), connection, subject, news_)});
    audience_.add(subject);
    const Response response(MHD_create_response_from_callback(
        MHD_SIZE_UNKNOWN, streamBlock, &Glue::read, stream.get(), &Glue::close));
    if (!response) {
        Glue::close(stream.release());
        return MHD_NO;
    }
    static_cast<void>(stream.release());  // the response closes it
    addHeaders(response.get(), "text/event-stream");
    return MHD_queue_response(connection, MHD_HTTP_OK, response.get());
}

}  // namespace Veskar::Live
