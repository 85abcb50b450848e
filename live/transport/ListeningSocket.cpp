// SPDX-License-Identifier: Apache-2.0
#include "live/transport/ListeningSocket.h"

#include <veskar-host/InputError.h>

#include "live/transport/Descriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace Veskar::Live {
namespace {

using Host::InputError;

struct FreeAddresses {
    void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

[[noreturn]] void fail(const std::string& place, int fault = errno) {
    throw InputError(place, InputError(textOf(fault)));
}

FileDescriptor openSocket(int family, int type, const std::string& place) {
    FileDescriptor made(::socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!made) {
        fail(place);
    }
    return made;
}

/// @return whether a program listens at a Unix address
bool isListenedOn(const sockaddr_un& address, const std::string& path) {
    const FileDescriptor probe = openSocket(AF_UNIX, SOCK_STREAM, path);
    return ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
               0 ||
           errno != ECONNREFUSED;
}

void removeLeftover(const sockaddr_un& address, const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            fail(path);
        }
        return;
    }
    if (!S_ISSOCK(status.st_mode)) {
        throw InputError(path, InputError("is there and no socket"));
    }
    if (isListenedOn(address, path)) {
        throw InputError(path, InputError("another program listens there"));
    }
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        fail(path);
    }
}

std::string nameOfPlace(const NetworkPlace& place) {
    return (place.host.find(':') == std::string::npos ? place.host : "[" + place.host + "]") + ":" +
           std::to_string(place.port);
}

/// A socket for whatever arrives at an interface, with its addresses of this moment and later ones.
FileDescriptor bindToInterface(const NetworkPlace& place, int type) {
    const std::string name = nameOfPlace(place);
    FileDescriptor bound(::socket(AF_INET6, type | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const bool hasIPv6 = static_cast<bool>(bound);
    if (!hasIPv6) {
        bound = openSocket(AF_INET, type, name);
    }
    const int yes = 1;
    const int no = 0;
    ::setsockopt(bound.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (::setsockopt(bound.get(), SOL_SOCKET, SO_BINDTODEVICE, place.host.c_str(),
                     static_cast<socklen_t>(place.host.size())) != 0) {
        fail(name);
    }
    int result = 0;
    if (hasIPv6) {
        ::setsockopt(bound.get(), IPPROTO_IPV6, IPV6_V6ONLY, &no, sizeof no);
        sockaddr_in6 any{};
        any.sin6_family = AF_INET6;
        any.sin6_port = htons(place.port);
        result = ::bind(bound.get(), reinterpret_cast<const sockaddr*>(&any), sizeof any);
    } else {
        sockaddr_in any{};
        any.sin_family = AF_INET;
        any.sin_port = htons(place.port);
        result = ::bind(bound.get(), reinterpret_cast<const sockaddr*>(&any), sizeof any);
    }
    if (result != 0) {
        fail(name);
    }
    return bound;
}

bool isEverywhere(const sockaddr* address) {
    if (address->sa_family == AF_INET) {
        return reinterpret_cast<const sockaddr_in*>(address)->sin_addr.s_addr == INADDR_ANY;
    }
    return address->sa_family == AF_INET6 &&
           IN6_IS_ADDR_UNSPECIFIED(&reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr);
}

FileDescriptor bindTo(const NetworkPlace& place, int type) {
    const std::string name = nameOfPlace(place);
    if (::if_nametoindex(place.host.c_str()) != 0) {
        return bindToInterface(place, type);
    }
    // Numeric, but for the one name that needs no network to be known.
    addrinfo hints{};
    hints.ai_socktype = type;
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    addrinfo* list = nullptr;
    const std::string host = place.host == "localhost" ? "127.0.0.1" : place.host;
    if (::getaddrinfo(host.c_str(), std::to_string(place.port).c_str(), &hints, &list) != 0) {
        throw InputError(name, InputError("is neither an address nor a network interface"));
    }
    const Addresses addresses(list);
    if (isEverywhere(list->ai_addr)) {
        throw InputError(name, InputError("is everywhere; name an interface or its address"));
    }
    FileDescriptor bound = openSocket(list->ai_family, type, name);
    const int yes = 1;
    ::setsockopt(bound.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (::bind(bound.get(), list->ai_addr, list->ai_addrlen) != 0) {
        fail(name);
    }
    return bound;
}

}  // namespace

NetworkPlace NetworkPlace::parse(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    const std::string end = colon == std::string::npos ? "" : text.substr(colon + 1);
    NetworkPlace place;
    place.host = text.substr(0, colon);
    bool isHost = place.host.find(':') == std::string::npos;
    if (place.host.size() >= 2 && place.host.front() == '[' && place.host.back() == ']') {
        place.host = place.host.substr(1, place.host.size() - 2);
        isHost = true;
    }
    const auto [behind, fault] = std::from_chars(end.data(), end.data() + end.size(), place.port);
    if (!isHost || place.host.empty() || fault != std::errc() ||
        behind != end.data() + end.size()) {
        throw InputError("\"" + text + "\" is not HOST:PORT");
    }
    return place;
}

ListeningSocket ListeningSocket::atPath(const std::string& path, mode_t permissions) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        throw InputError(path, InputError("a socket's path has 1 to 107 bytes"));
    }
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    removeLeftover(address, path);
    ListeningSocket made(openSocket(AF_UNIX, SOCK_STREAM, path));
    // Linux gives the file the permissions of the socket, without those that the umask takes away:
    // at no time may more users connect than shall.
    ::fchmod(made.get(), permissions);
    if (::bind(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        fail(path);
    }
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) {
        made.path_ = path;
        made.device_ = status.st_dev;
        made.inode_ = status.st_ino;
    }
    if (::chmod(path.c_str(), permissions) != 0 || ::listen(made.get(), SOMAXCONN) != 0) {
        fail(path);
    }
    return made;
}

ListeningSocket ListeningSocket::tcp(const NetworkPlace& place) {
    ListeningSocket made(bindTo(place, SOCK_STREAM));
    if (::listen(made.get(), SOMAXCONN) != 0) {
        fail(nameOfPlace(place));
    }
    return made;
}

ListeningSocket ListeningSocket::udp(const NetworkPlace& place) {
    return ListeningSocket(bindTo(place, SOCK_DGRAM));
}

ListeningSocket::~ListeningSocket() {
    struct stat status {};
    if (!path_.empty() && ::lstat(path_.c_str(), &status) == 0 && status.st_dev == device_ &&
        status.st_ino == inode_) {
        ::unlink(path_.c_str());
    }
}

std::uint16_t ListeningSocket::port() const {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return 0;
    }
    if (address.ss_family == AF_INET) {
        return ntohs(reinterpret_cast<const sockaddr_in*>(&address)->sin_port);
    }
    return ntohs(reinterpret_cast<const sockaddr_in6*>(&address)->sin6_port);
}

}  // namespace Veskar::Live
