// SPDX-License-Identifier: Apache-2.0
#include "live/service/MetricsServer.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace Veskar::Live {
namespace {

std::string answerTo(const std::string& request, const std::function<std::string()>& text) {
    const bool isGet = request.compare(0, 4, "GET ") == 0;
    const std::string body = isGet ? text() : "";
    return (isGet ? "HTTP/1.0 200 OK\r\nContent-Type: text/plain; version=0.0.4\r\n"
                  : "HTTP/1.0 405 Method Not Allowed\r\nAllow: GET\r\n") +
           ("Content-Length: " + std::to_string(body.size())) + "\r\nConnection: close\r\n\r\n" +
           body;
}

}  // namespace

MetricsServer::MetricsServer(EventLoop& loop, const NetworkPlace& place, Faults& faults,
                             std::function<std::string()> text)
    : loop_(loop),
      text_(std::move(text)),
      acceptor_(loop, ListeningSocket::tcp(place), "prometheus", faults,
                [this](FileDescriptor connection) { add(std::move(connection)); }) {}

void MetricsServer::add(FileDescriptor connection) {
    if (clients_.size() >= mostClients) {
        return;
    }
    const auto client = clients_.emplace(clients_.end());
    client->connection = std::move(connection);
    client->watch = loop_.watch(client->connection.get(), EPOLLIN, [this, client](std::uint32_t) {
        client->answer.empty() ? read(client) : write(client);
    });
    client->patience = loop_.timer([this, client] { clients_.erase(client); });
    client->patience.expireAfter(patience);
}

void MetricsServer::read(std::list<Client>::iterator client) {
    std::array<char, 4096> piece{};
    const ssize_t count =
        ::recv(client->connection.get(), piece.data(), piece.size(), MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    if (count > 0) {
        client->request.append(piece.data(), static_cast<std::size_t>(count));
    }
    if (client->request.find("\r\n\r\n") != std::string::npos) {
        client->answer = answerTo(client->request, text_);
        client->watch.setEvents(EPOLLOUT);
        write(client);
    } else if (count <= 0 || client->request.size() > longestRequest) {
        clients_.erase(client);
    }
}

void MetricsServer::write(std::list<Client>::iterator client) {
    const ssize_t count =
        ::send(client->connection.get(), client->answer.data() + client->written,
               client->answer.size() - client->written, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    client->written += count > 0 ? static_cast<std::size_t>(count) : 0;
    if (count <= 0 || client->written == client->answer.size()) {
        clients_.erase(client);
    }
}

}  // namespace Veskar::Live
