// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtspSession.h"

#include <veskar-host/InputError.h>

#include "live/rtsp/GStreamer.h"

#include <algorithm>
#include <atomic>
#include <string>
#include <string_view>

#include <gst/app/gstappsink.h>
#include <gst/rtp/gstrtpbuffer.h>

namespace Veskar::Live {
namespace {

using Clock = EventLoop::Clock;
using std::chrono::duration_cast;

/// Name of the payload, as GStreamer writes it; others begin so, too: compressed forms of it.
constexpr std::string_view metadata = "VND.ONVIF.METADATA";

struct UnrefMessage {
    void operator()(GstMessage* message) const noexcept { gst_message_unref(message); }
};
using MessageHandle = std::unique_ptr<GstMessage, UnrefMessage>;

struct UnrefSample {
    void operator()(GstSample* sample) const noexcept { gst_sample_unref(sample); }
};

GstElement* make(const char* kind) {
    GstElement* element = gst_element_factory_make(kind, nullptr);
    if (element == nullptr) {
        throw Host::InputError(std::string("GStreamer has no element \"") + kind + "\"");
    }
    return element;
}

/// Hands the packet of a sample on.
void readPacket(GstSample* sample, RtspMailbox& mailbox) {
    GstRTPBuffer packet = GST_RTP_BUFFER_INIT;
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (buffer == nullptr || gst_rtp_buffer_map(buffer, GST_MAP_READ, &packet) == FALSE) {
        return;  // no RTP; its number will be missing
    }
    mailbox.add({gst_rtp_buffer_get_seq(&packet),
                 gst_rtp_buffer_get_marker(&packet) != FALSE,
                 {static_cast<const char*>(gst_rtp_buffer_get_payload(&packet)),
                  gst_rtp_buffer_get_payload_len(&packet)}});
    gst_rtp_buffer_unmap(&packet);
}

}  // namespace

/// GStreamer's part of a session: a source that speaks RTSP, and a sink that gets its packets.
class RtspSession::Pipeline {
public:
    Pipeline(const RtspOptions& options, const std::optional<Credentials>& credentials,
             RtspMailbox& mailbox);

    /// Plays until the session ends.
    void run();
    /// Ends it; for another thread.
    void stop() {
        gst_bus_post(bus_.get(),
                     gst_message_new_application(nullptr, gst_structure_new_empty("veskar-stop")));
    }

private:
    std::string play();
    std::string reasonOf(GstMessage* message) const;
    void noteActivity() { active_ = Clock::now().time_since_epoch().count(); }
    Clock::duration silentFor() const {
        return Clock::now().time_since_epoch() - Clock::duration(active_);
    }

    // Called by GStreamer, on its threads.
    static gboolean selectStream(GstElement* source, guint number, GstCaps* caps, gpointer self);
    static void addManager(GstElement* source, GstElement* manager, gpointer self);
    static void noteReport(GstElement* manager, guint session, guint sender, gpointer self);
    static void addPad(GstElement* source, GstPad* pad, gpointer self);
    static GstFlowReturn receive(GstAppSink* sink, gpointer self);

    const Clock::duration silence_;
    const bool hasCredentials_;
    RtspMailbox& mailbox_;
    std::atomic<Clock::rep> active_{0};   ///< when something came last
    std::atomic<bool> isOffered_{false};  ///< a track of any kind
    std::atomic<bool> isCompressed_{false};
    std::atomic<bool> isSelected_{false};
    GstHandle<GstElement> pipeline_;
    GstHandle<GstBus> bus_;
    GstElement* sink_ = nullptr;  ///< of the pipeline
};

RtspSession::Pipeline::Pipeline(const RtspOptions& options,
                                const std::optional<Credentials>& credentials, RtspMailbox& mailbox)
    : silence_(options.silence),
      hasCredentials_(credentials),
      mailbox_(mailbox),
      pipeline_(GST_ELEMENT(gst_object_ref_sink(gst_pipeline_new(nullptr)))),
      bus_(gst_element_get_bus(pipeline_.get())) {
    const bool isTcp = options.transport == RtspTransport::Tcp;
    GstElement* source = make("rtspsrc");
    gst_bin_add(GST_BIN(pipeline_.get()), source);
    sink_ = make("appsink");
    gst_bin_add(GST_BIN(pipeline_.get()), sink_);

    gst_util_set_object_arg(G_OBJECT(source), "protocols", isTcp ? "tcp" : "udp");
    // Without estimates of clocks, retransmissions and waiting: reports have stamps of their own.
    gst_util_set_object_arg(G_OBJECT(source), "buffer-mode", "none");
    const auto wait = duration_cast<std::chrono::milliseconds>(options.reordering);
    g_object_set(source, "location", options.url.c_str(), "latency",
                 isTcp ? 0U : static_cast<guint>(wait.count()), "do-retransmission", FALSE,
                 "probation", 0U, "udp-reconnect", FALSE, "timeout", guint64{0}, "tcp-timeout",
                 static_cast<guint64>(std::chrono::microseconds(options.answerWithin).count()),
                 nullptr);
    if (credentials) {
        g_object_set(source, "user-id", credentials->user.c_str(), "user-pw",
                     credentials->password.c_str(), nullptr);
    }
    g_signal_connect(source, "select-stream", G_CALLBACK(selectStream), this);
    g_signal_connect(source, "new-manager", G_CALLBACK(addManager), this);
    g_signal_connect(source, "pad-added", G_CALLBACK(addPad), this);

    g_object_set(sink_, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = receive;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink_), &callbacks, this, nullptr);
}

/// The first track with metadata is read, and no other.
gboolean RtspSession::Pipeline::selectStream(GstElement* /*source*/, guint /*number*/,
                                             GstCaps* caps, gpointer self) {
    auto& pipeline = *static_cast<Pipeline*>(self);
    const char* name = gst_structure_get_string(gst_caps_get_structure(caps, 0), "encoding-name");
    const std::string_view encoding = name == nullptr ? "" : name;
    pipeline.isOffered_ = true;
    if (encoding == metadata) {
        return static_cast<gboolean>(!pipeline.isSelected_.exchange(true));
    }
    if (encoding.substr(0, metadata.size()) == metadata) {
        pipeline.isCompressed_ = true;
    }
    return FALSE;
}

void RtspSession::Pipeline::addManager(GstElement* /*source*/, GstElement* manager, gpointer self) {
    g_signal_connect(manager, "on-ssrc-active", G_CALLBACK(noteReport), self);
}

/// A track may be silent for long, as there may be nothing to tell; its sender's reports come.
void RtspSession::Pipeline::noteReport(GstElement* /*manager*/, guint /*session*/, guint /*sender*/,
                                       gpointer self) {
    static_cast<Pipeline*>(self)->noteActivity();
}

/// A sender that begins anew gets another pad.
void RtspSession::Pipeline::addPad(GstElement* /*source*/, GstPad* pad, gpointer self) {
    const GstHandle<GstPad> input(
        gst_element_get_static_pad(static_cast<Pipeline*>(self)->sink_, "sink"));
    if (const GstHandle<GstPad> last(gst_pad_get_peer(input.get())); last) {
        gst_pad_unlink(last.get(), input.get());
    }
    gst_pad_link(pad, input.get());
}

GstFlowReturn RtspSession::Pipeline::receive(GstAppSink* sink, gpointer self) {
    auto& pipeline = *static_cast<Pipeline*>(self);
    const std::unique_ptr<GstSample, UnrefSample> sample(gst_app_sink_pull_sample(sink));
    if (!sample) {
        return GST_FLOW_EOS;
    }
    pipeline.noteActivity();
    try {
        readPacket(sample.get(), pipeline.mailbox_);
    } catch (const std::bad_alloc&) {
        return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

void RtspSession::Pipeline::run() {
    noteActivity();
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    const std::string reason = play();
    gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    mailbox_.end(reason);
}

std::string RtspSession::Pipeline::play() {
    constexpr auto awaited = static_cast<GstMessageType>(
        GST_MESSAGE_ERROR | GST_MESSAGE_EOS | GST_MESSAGE_PROGRESS | GST_MESSAGE_APPLICATION);
    for (;;) {
        const auto wait = std::max(silence_ - silentFor(), Clock::duration::zero());
        const MessageHandle message(gst_bus_timed_pop_filtered(
            bus_.get(),
            static_cast<GstClockTime>(duration_cast<std::chrono::nanoseconds>(wait).count()),
            awaited));
        if (!message) {
            if (silentFor() >= silence_) {
                return "the server is silent";
            }
            continue;
        }
        switch (GST_MESSAGE_TYPE(message.get())) {
            case GST_MESSAGE_ERROR:
                return reasonOf(message.get());
            case GST_MESSAGE_EOS:
                return "ended by the server";
            case GST_MESSAGE_APPLICATION:
                return "no longer wanted";
            default: {
                noteActivity();
                GstProgressType type{};
                gchar* code = nullptr;
                gst_message_parse_progress(message.get(), &type, &code, nullptr);
                // After "open", the request to play.
                if (type == GST_PROGRESS_TYPE_COMPLETE && std::string_view(code) == "request") {
                    mailbox_.start();
                }
                g_free(code);
            }
        }
    }
}

std::string RtspSession::Pipeline::reasonOf(GstMessage* message) const {
    GError* error = nullptr;
    gchar* debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    std::string reason = error->message;
    if (g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_AUTHORIZED) != FALSE) {
        reason = hasCredentials_ ? "the server refuses user and password"
                                 : "the server asks for user and password";
    } else if (isOffered_ && !isSelected_) {
        reason = isCompressed_ ? "the server has metadata in a compressed form only"
                               : "the server has no track with metadata";
    } else if (debug != nullptr) {
        // The last line tells what happened; those before it where in GStreamer.
        const std::string_view text = debug;
        reason += " (" + std::string(text.substr(text.rfind('\n') + 1)) + ")";
    }
    g_clear_error(&error);
    g_free(debug);
    return reason;
}

RtspSession::RtspSession(const RtspOptions& options, const std::optional<Credentials>& credentials,
                         RtspMailbox& mailbox)
    : pipeline_(std::make_unique<Pipeline>(options, credentials, mailbox)),
      thread_([this] { pipeline_->run(); }) {}

RtspSession::~RtspSession() {
    pipeline_->stop();
    thread_.join();
}

}  // namespace Veskar::Live
