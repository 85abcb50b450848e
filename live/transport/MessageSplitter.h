// SPDX-License-Identifier: Apache-2.0
// Cuts a stream of bytes into messages.
#pragma once

#include "live/transport/Counters.h"
#include "live/transport/Faults.h"
#include "live/transport/Message.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Where a message ends in a stream.
enum class Framing {
    /// At a line end, LF or CR LF, which is not part of the message. Empty lines are none.
    Lines,
    /// At the end of the root element: XML documents one after the other, with or without white
    /// space between them. Documents are not checked, only delimited. One that is unfinished where
    /// an XML declaration, a MetadataStream or a "<" within a tag shows that another has begun is
    /// cut.
    XmlDocuments,
};

/// How an input of bytes is read.
struct StreamOptions {
    std::string name;                      ///< of the input, in its messages and in faults
    Framing framing = Framing::Lines;      ///< where messages end
    std::size_t longest = longestMessage;  ///< bytes of a message
    /// A connection ends when a message takes longer.
    std::optional<std::chrono::steady_clock::duration> finishWithin = std::chrono::seconds(10);
};

/// Finds the ends of messages. Is shown each byte of the stream once.
class Framer {
public:
    /// What was found.
    struct Found {
        enum Kind {
            More,  ///< nothing; all was looked at
            End,   ///< a message ends before `position`
            Cut,   ///< what began before `position` broke off; a message begins there
        };
        Kind kind = More;
        std::size_t position = 0;  ///< in the text
    };

    virtual ~Framer() = default;
    /// @param text of the message from its begin, and what follows it
    /// @param from the first byte of it that has not been looked at
    /// @return what ends first; after `More`, the next call goes on at the end of the text
    virtual Found find(std::string_view text, std::size_t from) = 0;
    /// Forgets the message that has begun: the next byte begins one.
    virtual void restart() = 0;
    /// @return characters that belong to no message at its begin and its end
    virtual std::string_view separators() const = 0;
};

/// Cuts the bytes of one publisher into messages. A message that is too long is dropped, and the
/// stream goes on behind its end.
class MessageSplitter {
public:
    using Sink = std::function<void(std::string_view)>;
    using Clock = std::chrono::steady_clock;

    /// @param options must outlive the splitter
    /// @param counters of the input; as options
    /// @param faults receives what is dropped; as options
    /// @param sink receives the messages
    MessageSplitter(const StreamOptions& options, InputCounters& counters, Faults& faults,
                    Sink sink);

    /// @param bytes what has arrived
    /// @param arrived when
    /// @throw what the sink throws; bytes behind that message are handed on by the next call
    void feed(std::string_view bytes, Clock::time_point arrived);
    /// The stream has ended: what stands behind the last end is a message, as in a file without a
    /// line end at its end.
    void end();
    /// The stream has ended: what stands behind the last end is dropped.
    /// @param reason told
    void cut(const std::string& reason);

    /// @return when the message began to arrive that has not ended yet
    std::optional<Clock::time_point> unfinishedSince() const;
    /// @return bytes that messages occupy beside the splitter itself
    std::size_t memory() const { return buffer_.capacity() - std::string().capacity(); }

private:
    void split();
    std::string_view contents(std::string_view message) const;
    std::string takeRest();
    void handOn(std::string_view message);
    void discard(std::size_t count);
    void dropTooLong();
    void dropCut(const std::string& reason);

    std::unique_ptr<Framer> framer_;
    const StreamOptions& options_;
    InputCounters& counters_;
    Faults& faults_;
    Sink sink_;
    Clock::time_point arrived_;  ///< the last bytes
    Clock::time_point begun_;    ///< the message
    std::string buffer_;
    std::size_t begin_ = 0;    ///< of the message, in the buffer
    std::size_t scanned_ = 0;  ///< bytes of the message that the framer has seen
    bool isTooLong_ = false;   ///< the message's begin is gone
};

}  // namespace Veskar::Live
