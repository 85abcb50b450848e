// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>

#include <array>
#include <string>
#include <string_view>

#include <unistd.h>

namespace Veskar {

bool calledFromQWR() {
    const std::string link = "/proc/" + std::to_string(getpid()) + "/exe";
    std::array<char, 4096> buffer{};
    const ssize_t length = readlink(link.c_str(), buffer.data(), buffer.size());
    if (length < 0) {
        return false;
    }
    // Anywhere in the path: tools in the application's directory count as the application.
    const std::string_view path(buffer.data(), static_cast<std::size_t>(length));
    return path.find("quandrelwatcher") != std::string_view::npos;
}

}  // namespace Veskar
