// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/GStreamer.h"

#include <veskar-host/InputError.h>

#include <cstdlib>
#include <mutex>
#include <string>

namespace Veskar::Live {
namespace {

using Host::InputError;

/// @return the text of an error, which is freed
std::string textOf(GError* error) {
    std::string text = error == nullptr ? "unknown fault" : error->message;
    g_clear_error(&error);
    return text;
}

void load(const std::string& plugin) {
    const std::string path = VESKAR_GSTREAMER_PLUGINS "/libgst" + plugin + ".so";
    GError* error = nullptr;
    const GstHandle<GstPlugin> loaded(gst_plugin_load_file(path.c_str(), &error));
    if (!loaded) {
        throw InputError("RTSP needs GStreamer's plugin \"" + plugin +
                         "\" (Debian: gstreamer1.0-plugins-good): " + textOf(error));
    }
}

}  // namespace

void startGStreamer() {
    static std::once_flag once;
    std::call_once(once, [] {
        ::setenv("GST_PLUGIN_SYSTEM_PATH_1_0", "", 1);
        ::setenv("GST_REGISTRY_1_0", "/dev/null", 1);
        GError* error = nullptr;
        if (gst_init_check(nullptr, nullptr, &error) == FALSE) {
            throw InputError("GStreamer does not start: " + textOf(error));
        }
        for (const char* plugin : {"coreelements", "app", "rtp", "rtpmanager", "rtsp", "udp"}) {
            load(plugin);
        }
    });
}

}  // namespace Veskar::Live
