// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtpDocuments.h"

#include <algorithm>
#include <utility>

namespace Veskar::Live {
namespace {

/// @return whether a document begins here; asked only where the packet before is unknown
bool beginsDocument(std::string_view payload) {
    constexpr std::string_view mark = "\xef\xbb\xbf";  // byte order mark
    constexpr std::string_view blanks = " \t\r\n";
    if (payload.substr(0, mark.size()) == mark) {
        payload.remove_prefix(mark.size());
    }
    payload.remove_prefix(std::min(payload.find_first_not_of(blanks), payload.size()));
    if (payload.substr(0, 5) == "<?xml") {
        return true;
    }
    if (payload.empty() || payload.front() != '<') {
        return false;
    }
    payload.remove_prefix(1);
    std::string_view name = payload.substr(0, payload.find_first_of(" \t\r\n/>"));
    if (const std::size_t colon = name.find(':'); colon != std::string_view::npos) {
        name.remove_prefix(colon + 1);
    }
    return name == "MetadataStream" || name == "MetaDataStream";
}

}  // namespace

RtpDocuments::RtpDocuments(const StreamOptions& options, InputCounters& counters, Faults& faults,
                           MessageSplitter::Sink sink)
    : options_(options),
      counters_(counters),
      faults_(faults),
      splitter_(options_, counters_, faults_, std::move(sink)) {}

void RtpDocuments::add(const Packet& packet) {
    if (next_ && packet.number != *next_) {
        lose(static_cast<std::uint16_t>(packet.number - *next_));
    }
    next_ = static_cast<std::uint16_t>(packet.number + 1);
    if (isSkipping_ && beginsDocument(packet.payload)) {
        isSkipping_ = false;
    }
    if (!isSkipping_) {
        splitter_.feed(packet.payload, MessageSplitter::Clock::now());
    }
    if (packet.hasMarker) {
        // A document that is not well-formed is its reader's to refuse.
        splitter_.end();
        isSkipping_ = false;
    }
}

void RtpDocuments::lose(std::uint16_t packets) {
    const std::uint64_t before = counters_.cut;
    splitter_.cut("packets were lost");
    counters_.cut = before + 1;  // at least the one that the packets belonged to
    isSkipping_ = true;
    faults_.report("input " + options_.name + ": lost packets",
                   std::to_string(packets) + " at once");
}

void RtpDocuments::restart() {
    splitter_.cut("the track ended");
    next_.reset();
    isSkipping_ = true;
}

}  // namespace Veskar::Live
