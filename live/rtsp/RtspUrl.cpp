// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtspUrl.h"

#include <algorithm>
#include <memory>
#include <string_view>

#include <glib.h>

namespace Veskar::Live {
namespace {

struct UnrefUri {
    void operator()(GUri* uri) const noexcept { g_uri_unref(uri); }
};

}  // namespace

std::string faultOfRtspUrl(const std::string& url) {
    constexpr std::string_view scheme = "rtsp://";
    if (url.compare(0, scheme.size(), scheme) != 0) {
        return "expected rtsp://HOST[:PORT]/PATH";
    }
    const std::string_view behind = std::string_view(url).substr(scheme.size());
    if (behind.substr(0, behind.find('/')).find('@') != std::string_view::npos) {
        return "names a user; user and password stand in a file, which \"credentials\" names";
    }
    // The rest becomes part of requests, whose lines must not be split.
    const bool isPrintable = std::all_of(url.begin(), url.end(),
                                         [](char letter) { return letter > ' ' && letter < 127; });
    const std::unique_ptr<GUri, UnrefUri> uri(g_uri_parse(url.c_str(), G_URI_FLAGS_NONE, nullptr));
    if (!isPrintable || !uri || g_uri_get_host(uri.get()) == nullptr ||
        *g_uri_get_host(uri.get()) == '\0' || g_uri_get_port(uri.get()) == 0) {
        return "is no address; expected rtsp://HOST[:PORT]/PATH";
    }
    return {};
}

}  // namespace Veskar::Live
