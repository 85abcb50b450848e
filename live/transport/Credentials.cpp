// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Credentials.h"

#include <veskar-host/InputError.h>

#include "live/transport/Descriptor.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Veskar::Live {
namespace {

constexpr std::string_view prefix = "$CREDENTIALS_DIRECTORY/";

using Host::InputError;

FileDescriptor openSecret(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        throw InputError(path, InputError(textOf(errno)));
    }
    if (!S_ISREG(status.st_mode)) {
        throw InputError(path, InputError("is no regular file"));
    }
    if ((status.st_mode & S_IRWXO) != 0) {
        throw InputError(path,
                         InputError("is open to every user; take that away with chmod o-rwx"));
    }
    return file;
}

std::string contentsOf(const std::string& path) {
    const FileDescriptor file = openSecret(path);
    // MQTT limits user and password to 65,535 bytes.
    std::string contents(std::size_t{128} << 10, '\0');
    const ssize_t count = ::read(file.get(), contents.data(), contents.size());
    if (count < 0) {
        throw InputError(path, InputError(textOf(errno)));
    }
    contents.resize(static_cast<std::size_t>(count));
    return contents;
}

/// Takes the first line out of a text.
std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }
    return line;
}

}  // namespace

bool isHandedOver(const std::string& name) {
    return name.compare(0, prefix.size(), prefix) == 0;
}

std::string secretPath(const std::string& name) {
    if (!isHandedOver(name)) {
        return name;
    }
    const char* directory = std::getenv("CREDENTIALS_DIRECTORY");
    if (directory == nullptr) {
        throw InputError(name, InputError("systemd hands no credentials to the program"));
    }
    return std::string(directory) + "/" + name.substr(prefix.size());
}

void checkSecret(const std::string& name) {
    openSecret(secretPath(name));
}

std::string readSecretLine(const std::string& name) {
    const std::string contents = contentsOf(secretPath(name));
    std::string_view rest = contents;
    return std::string(takeLine(rest));
}

Credentials Credentials::read(const std::string& name) {
    const std::string path = secretPath(name);
    const std::string contents = contentsOf(path);
    std::string_view rest = contents;
    Credentials credentials;
    credentials.user = takeLine(rest);
    credentials.password = takeLine(rest);
    if (credentials.user.empty()) {
        throw InputError(path, InputError("has no user in its first line"));
    }
    return credentials;
}

}  // namespace Veskar::Live
