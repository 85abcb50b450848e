// SPDX-License-Identifier: Apache-2.0
// Joins the packets of a metadata track to documents.
#pragma once

#include "live/transport/MessageSplitter.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace Veskar::Live {

/// ONVIF's RTP payload for metadata: the text of XML documents, cut anywhere, with the marker bit
/// in the last packet of each document. A document ends with its root element, or with the marker
/// at the latest. One of which a packet is missing is cut, and so is all up to the next begin.
class RtpDocuments {
public:
    /// A packet.
    struct Packet {
        std::uint16_t number = 0;  ///< sequence number
        bool hasMarker = false;
        std::string_view payload;
    };

    /// @param options must outlive the object, and frame XML documents
    /// @param counters of the input; as options
    /// @param faults receives what is dropped; as options
    /// @param sink receives the documents
    RtpDocuments(const StreamOptions& options, InputCounters& counters, Faults& faults,
                 MessageSplitter::Sink sink);

    /// @param packet in the order of the sequence numbers
    void add(const Packet& packet);
    /// The track has ended, or begins anew.
    void restart();

private:
    void lose(std::uint16_t packets);

    const StreamOptions& options_;
    InputCounters& counters_;
    Faults& faults_;
    MessageSplitter splitter_;
    std::optional<std::uint16_t> next_;  ///< number of the next packet
    bool isSkipping_ = true;             ///< the begin of the document is unknown
};

}  // namespace Veskar::Live
