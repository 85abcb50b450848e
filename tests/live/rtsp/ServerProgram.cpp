// SPDX-License-Identifier: Apache-2.0
// An RTSP server with tracks of text, as cameras have them: KEY=VALUE...
//   port       where it listens on 127.0.0.1
//   tracks     encodings of the tracks, with commas; all send the same
//   documents  file with a document per line, sent in turns
//   interval   between documents, ms; 0: none is sent
//   fragment   bytes of a document in a packet
//   drop       leaves out each packet with a number that this divides; 0: none
//   user, password, scheme   who may read it; basic or digest
// Writes "ready" to standard error when it listens.
#include "live/rtsp/GStreamer.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gst/app/gstappsrc.h>
#include <gst/rtp/gstrtpbasepayload.h>
#include <gst/rtp/gstrtpbuffer.h>
#include <gst/rtsp-server/rtsp-server.h>

namespace {

struct Options {
    std::string text(const std::string& key, const std::string& otherwise = "") const {
        const auto found = values.find(key);
        return found == values.end() ? otherwise : found->second;
    }
    unsigned number(const std::string& key, unsigned otherwise) const {
        return static_cast<unsigned>(std::stoul(text(key, std::to_string(otherwise))));
    }

    std::map<std::string, std::string> values;
};

/// What the callbacks of the libraries need.
struct Camera {
    std::vector<std::string> documents;
    unsigned interval = 20;
    unsigned fragment = 1000;
    unsigned drop = 0;
};
Camera camera;

/// Documents to packets: the marker ends each.
GstFlowReturn pay(GstRTPBasePayload* payload, GstBuffer* document) {
    GstFlowReturn result = GST_FLOW_OK;
    const gsize size = gst_buffer_get_size(document);
    for (gsize from = 0; from < size && result == GST_FLOW_OK;) {
        const gsize count = std::min<gsize>(camera.fragment, size - from);
        GstBuffer* packet = gst_rtp_buffer_new_allocate(static_cast<guint>(count), 0, 0);
        GstRTPBuffer mapped = GST_RTP_BUFFER_INIT;
        gst_rtp_buffer_map(packet, GST_MAP_WRITE, &mapped);
        gst_buffer_extract(document, from, gst_rtp_buffer_get_payload(&mapped), count);
        gst_rtp_buffer_set_marker(&mapped, static_cast<gboolean>(from + count == size));
        gst_rtp_buffer_unmap(&mapped);
        GST_BUFFER_PTS(packet) = GST_BUFFER_PTS(document);
        result = gst_rtp_base_payload_push(payload, packet);
        from += count;
    }
    gst_buffer_unref(document);
    return result;
}

gboolean setCaps(GstRTPBasePayload* payload, GstCaps* caps) {
    const char* encoding = gst_structure_get_string(gst_caps_get_structure(caps, 0), "encoding");
    const bool isVideo = std::string(encoding) == "H264";
    gst_rtp_base_payload_set_options(payload, isVideo ? "video" : "application", TRUE, encoding,
                                     90000);
    return gst_rtp_base_payload_set_outcaps(payload, nullptr);
}

void initClass(gpointer type, gpointer /*data*/) {
    auto* payload = static_cast<GstRTPBasePayloadClass*>(type);
    payload->handle_buffer = pay;
    payload->set_caps = setCaps;
    GstElementClass* element = GST_ELEMENT_CLASS(type);
    GstCaps* text = gst_caps_new_empty_simple("text/x-track");
    GstCaps* packets = gst_caps_new_empty_simple("application/x-rtp");
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, text));
    gst_element_class_add_pad_template(
        element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, packets));
    gst_caps_unref(text);
    gst_caps_unref(packets);
    gst_element_class_set_static_metadata(element, "Text payloader", "Codec/Payloader/Network/RTP",
                                          "Sends text", "veskar");
}

void registerPayloader() {
    GTypeQuery base{};
    g_type_query(GST_TYPE_RTP_BASE_PAYLOAD, &base);
    const GType type =
        g_type_register_static_simple(GST_TYPE_RTP_BASE_PAYLOAD, "VeskarTextPay", base.class_size,
                                      initClass, base.instance_size, nullptr, G_TYPE_FLAG_NONE);
    gst_element_register(nullptr, "textpay", GST_RANK_NONE, type);
}

GstPadProbeReturn dropSome(GstPad* /*pad*/, GstPadProbeInfo* info, gpointer /*data*/) {
    GstRTPBuffer packet = GST_RTP_BUFFER_INIT;
    gst_rtp_buffer_map(GST_PAD_PROBE_INFO_BUFFER(info), GST_MAP_READ, &packet);
    const bool isDropped = gst_rtp_buffer_get_seq(&packet) % camera.drop == 0;
    gst_rtp_buffer_unmap(&packet);
    return isDropped ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

/// What sends the documents on a track.
struct Track {
    Veskar::Live::GstHandle<GstElement> source;
    std::size_t next = 0;

    static gboolean send(gpointer self) {
        auto& track = *static_cast<Track*>(self);
        // Before that, it would stamp with times of another clock, for which the server waits.
        if (GST_STATE(track.source.get()) == GST_STATE_PLAYING) {
            const std::string& document = camera.documents[track.next++ % camera.documents.size()];
            gst_app_src_push_buffer(GST_APP_SRC(track.source.get()),
                                    gst_buffer_new_memdup(document.data(), document.size()));
        }
        return G_SOURCE_CONTINUE;
    }
    static void stop(GstRTSPMedia* /*media*/, gpointer timer) {
        g_source_remove(GPOINTER_TO_UINT(timer));
    }
    static void destroy(gpointer self) { delete static_cast<Track*>(self); }
};

void configure(GstRTSPMediaFactory* /*factory*/, GstRTSPMedia* media, gpointer /*data*/) {
    const Veskar::Live::GstHandle<GstElement> bin(gst_rtsp_media_get_element(media));
    for (int i = 0;; ++i) {
        const std::string number = std::to_string(i);
        auto track = std::make_unique<Track>();
        track->source.reset(gst_bin_get_by_name(GST_BIN(bin.get()), ("source" + number).c_str()));
        if (!track->source) {
            return;
        }
        if (camera.drop > 0) {
            const Veskar::Live::GstHandle<GstElement> payloader(
                gst_bin_get_by_name(GST_BIN(bin.get()), ("pay" + number).c_str()));
            const Veskar::Live::GstHandle<GstPad> pad(
                gst_element_get_static_pad(payloader.get(), "src"));
            gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, dropSome, nullptr, nullptr);
        }
        if (camera.interval > 0) {
            const guint timer = g_timeout_add_full(G_PRIORITY_DEFAULT, camera.interval, Track::send,
                                                   track.release(), Track::destroy);
            g_signal_connect(media, "unprepared", G_CALLBACK(Track::stop), GUINT_TO_POINTER(timer));
        }
    }
}

/// @return the tracks as GStreamer describes pipelines
std::string pipelineOf(const std::string& tracks) {
    std::istringstream names(tracks);
    std::string text = "( ";
    int number = 0;
    for (std::string name; std::getline(names, name, ','); ++number) {
        const std::string suffix = std::to_string(number);
        text.append("appsrc name=source").append(suffix);
        text.append(" is-live=true do-timestamp=true format=time caps=\"text/x-track,");
        text.append("encoding=(string)").append(name).append("\" ! textpay name=pay");
        text.append(suffix).append(" pt=").append(std::to_string(96 + number)).append(" ");
    }
    return text + ")";
}

void protect(GstRTSPServer* server, GstRTSPMediaFactory* factory, const Options& options) {
    const bool isDigest = options.text("scheme") == "digest";
    const std::string user = options.text("user");
    const std::string password = options.text("password");
    GstRTSPAuth* auth = gst_rtsp_auth_new();
    GstRTSPToken* token =
        gst_rtsp_token_new(GST_RTSP_TOKEN_MEDIA_FACTORY_ROLE, G_TYPE_STRING, "reader", nullptr);
    if (isDigest) {
        gst_rtsp_auth_set_supported_methods(auth, GST_RTSP_AUTH_DIGEST);
        gst_rtsp_auth_add_digest(auth, user.c_str(), password.c_str(), token);
    } else {
        gchar* basic = gst_rtsp_auth_make_basic(user.c_str(), password.c_str());
        gst_rtsp_auth_add_basic(auth, basic, token);
        g_free(basic);
    }
    gst_rtsp_media_factory_add_role(factory, "reader", GST_RTSP_PERM_MEDIA_FACTORY_ACCESS,
                                    G_TYPE_BOOLEAN, TRUE, GST_RTSP_PERM_MEDIA_FACTORY_CONSTRUCT,
                                    G_TYPE_BOOLEAN, TRUE, nullptr);
    gst_rtsp_server_set_auth(server, auth);
    gst_rtsp_token_unref(token);
    g_object_unref(auth);
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    for (const std::string& argument : std::vector<std::string>(arguments + 1, arguments + count)) {
        const std::size_t sign = argument.find('=');
        options.values[argument.substr(0, sign)] = argument.substr(sign + 1);
    }
    std::ifstream file(options.text("documents"));
    for (std::string line; std::getline(file, line);) {
        camera.documents.push_back(line);
    }
    camera.interval = options.number("interval", camera.interval);
    camera.fragment = options.number("fragment", camera.fragment);
    camera.drop = options.number("drop", camera.drop);

    Veskar::Live::startGStreamer();
    registerPayloader();
    GstRTSPServer* server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server, "127.0.0.1");
    gst_rtsp_server_set_service(server, options.text("port").c_str());
    GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, pipelineOf(options.text("tracks")).c_str());
    g_signal_connect(factory, "media-configure", G_CALLBACK(configure), nullptr);
    if (!options.text("user").empty()) {
        protect(server, factory, options);
    }
    GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(mounts, "/stream", factory);
    g_object_unref(mounts);
    if (gst_rtsp_server_attach(server, nullptr) == 0) {
        std::fputs("cannot listen\n", stderr);
        return 1;
    }
    std::fputs("ready\n", stderr);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
