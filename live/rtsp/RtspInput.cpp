// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtspInput.h"

#include <veskar-host/InputError.h>

#include "live/rtsp/GStreamer.h"

#include <utility>

namespace Veskar::Live {
namespace {

/// The loop takes documents at once, and sensors send tens per second: more wait only when it
/// hangs.
QueueLimits limitsFor(const RtspOptions& options) {
    return {1000, 2 * options.longest};
}

StreamOptions streamOf(const RtspOptions& options) {
    return {options.channel, Framing::XmlDocuments, options.longest};
}

std::optional<Credentials> credentialsOf(const RtspOptions& options) {
    if (options.credentials.empty()) {
        return std::nullopt;
    }
    return Credentials::read(options.credentials);
}

}  // namespace

RtspInput::RtspInput(EventLoop& loop, RtspOptions options, Faults& faults, Receiver receiver)
    : options_(std::move(options)),
      faults_(faults),
      receiver_(std::move(receiver)),
      name_("input " + options_.channel),
      backoff_(options_.firstRetry, options_.longestRetry),
      retry_(loop.timer([this] { connect(); })),
      mailbox_(streamOf(options_), limitsFor(options_), faults),
      watch_(loop.watch(mailbox_.descriptor(), EPOLLIN, [this](std::uint32_t) { receive(); })) {
    startGStreamer();
    credentialsOf(options_);
    retry_.expireAfter({});
}

void RtspInput::connect() {
    try {
        // Read each time: a password can be changed while the program runs.
        session_ = std::make_unique<RtspSession>(options_, credentialsOf(options_), mailbox_);
    } catch (const Host::InputError& error) {
        ended(error.what());
    }
}

void RtspInput::receive() {
    const RtspMailbox::News news = mailbox_.take();
    counters_.tooLong = news.lost.tooLong;
    counters_.cut = news.lost.cut;
    counters_.overflowed = news.lost.overflowed;
    if (news.hasStarted) {
        ++counters_.connections;
        counters_.publishers = 1;
    }
    if (news.end) {
        session_.reset();
        ended(*news.end);
    }
    if (news.document) {
        ++counters_.messages;
        counters_.bytes += news.document->text.size();
        receiver_({options_.channel, news.document->text, news.document->arrived});
    }
}

void RtspInput::ended(const std::string& reason) {
    const bool hadStarted = std::exchange(counters_.publishers, 0) != 0;
    faults_.report(name_ + (hadStarted ? ": lost the connection" : ": cannot connect"), reason);
    // A server that ends each session at once must not be asked all the time.
    if (std::exchange(messagesBefore_, counters_.messages) < counters_.messages) {
        backoff_.reset();
    }
    retry_.expireAfter(backoff_.next());
}

}  // namespace Veskar::Live
