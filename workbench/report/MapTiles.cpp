// SPDX-License-Identifier: Apache-2.0
#include "report/MapTiles.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string_view>

namespace Workbench {

namespace {

/// Of names, addresses and ports. Nothing that ends a directive of the policy, or an attribute of
/// the page.
bool isOfHost(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 ||
           std::string_view(".-:[]").find(letter) != std::string_view::npos;
}

/// @return the length of scheme, host and port in front of a path; 0 when there are none
std::size_t originLength(const std::string& url) {
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (url.compare(0, scheme.size(), scheme) == 0) {
            const auto host = url.begin() + static_cast<std::ptrdiff_t>(scheme.size());
            const auto end = std::find_if_not(host, url.end(), isOfHost);
            return end != host && end != url.end() && *end == '/'
                       ? static_cast<std::size_t>(end - url.begin())
                       : 0;
        }
    }
    return 0;
}

}  // namespace

std::string originOf(const std::string& url) {
    const std::size_t length = originLength(url);
    if (length == 0) {
        throw InputError("\"" + url +
                         "\" is no address of tiles; expected http:// or https://, "
                         "as in https://HOST/{z}/{x}/{y}.png");
    }
    for (const char* part : {"{z}", "{x}", "{y}"}) {
        if (url.find(part) == std::string::npos) {
            throw InputError("\"" + url + "\" has no " + part);
        }
    }
    if (const auto others = std::count(url.begin(), url.end(), '{'); others != 3) {
        throw InputError("\"" + url +
                         "\" has other parts in braces than {z}, {x} and {y}, each once");
    }
    return url.substr(0, length);
}

}  // namespace Workbench
