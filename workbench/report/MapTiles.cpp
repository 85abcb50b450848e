// SPDX-License-Identifier: Apache-2.0
#include "report/MapTiles.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <algorithm>
#include <regex>

namespace Workbench {

std::string originOf(const std::string& url) {
    // Nothing that ends a directive of the policy, or an attribute of the page.
    static const std::regex origin(
        R"(^https?://([A-Za-z0-9.-]+|\[[0-9A-Fa-f:.]+\])(:[0-9]{1,5})?)");
    std::smatch found;
    if (!std::regex_search(url, found, origin) || url.size() == found.str().size() ||
        url[found.str().size()] != '/') {
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
    return found.str();
}

}  // namespace Workbench
