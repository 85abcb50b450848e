// SPDX-License-Identifier: Apache-2.0
#include "live/transport/MessageSplitter.h"

#include "live/transport/XmlFramer.h"

#include <algorithm>
#include <utility>

namespace Veskar::Live {
namespace {

constexpr const char* brokenOff = "its publisher broke it off";

class LineFramer : public Framer {
public:
    Found find(std::string_view text, std::size_t from) override {
        const std::size_t end = text.find('\n', from);
        return end == std::string_view::npos ? Found{} : Found{Found::End, end + 1};
    }
    void restart() override {}
    std::string_view separators() const override { return "\r\n"; }
};

std::unique_ptr<Framer> framerOf(Framing framing) {
    if (framing == Framing::XmlDocuments) {
        return std::make_unique<XmlFramer>();
    }
    return std::make_unique<LineFramer>();
}

}  // namespace

MessageSplitter::MessageSplitter(const StreamOptions& options, InputCounters& counters,
                                 Faults& faults, Sink sink)
    : framer_(framerOf(options.framing)),
      options_(options),
      counters_(counters),
      faults_(faults),
      sink_(std::move(sink)) {}

void MessageSplitter::feed(std::string_view bytes, Clock::time_point arrived) {
    arrived_ = arrived;
    buffer_.append(bytes);
    split();
    buffer_.erase(0, std::exchange(begin_, 0));
    // A long message must not occupy its memory for good.
    constexpr std::size_t usual = std::size_t{64} << 10;
    if (buffer_.size() < usual && buffer_.capacity() > 4 * usual) {
        buffer_.shrink_to_fit();
    }
}

void MessageSplitter::split() {
    while (begin_ + scanned_ < buffer_.size()) {
        if (scanned_ == 0 && !isTooLong_) {
            begin_ =
                std::min(buffer_.find_first_not_of(framer_->separators(), begin_), buffer_.size());
            begun_ = arrived_;
        }
        const std::string_view text = std::string_view(buffer_).substr(begin_);
        const Framer::Found found = framer_->find(text, scanned_);
        if (found.kind == Framer::Found::More) {
            scanned_ = text.size();
            // The first character of a line's end does not count.
            if (isTooLong_ || text.size() > options_.longest + 1) {
                if (!std::exchange(isTooLong_, true)) {
                    dropTooLong();
                }
                discard(text.size());
            }
            return;
        }
        const std::string_view message = text.substr(0, found.position);
        discard(found.position);
        if (std::exchange(isTooLong_, false)) {
            continue;
        }
        if (found.kind == Framer::Found::Cut) {
            dropCut(brokenOff);
        } else {
            handOn(message);
        }
    }
}

std::optional<MessageSplitter::Clock::time_point> MessageSplitter::unfinishedSince() const {
    if (isTooLong_ || begin_ < buffer_.size()) {
        return begun_;
    }
    return std::nullopt;
}

std::string_view MessageSplitter::contents(std::string_view message) const {
    const std::size_t first = message.find_first_not_of(framer_->separators());
    if (first == std::string_view::npos) {
        return {};
    }
    return message.substr(first, message.find_last_not_of(framer_->separators()) + 1 - first);
}

void MessageSplitter::discard(std::size_t count) {
    begin_ += count;
    scanned_ = 0;
}

void MessageSplitter::handOn(std::string_view message) {
    const std::string_view text = contents(message);
    if (text.size() > options_.longest) {
        dropTooLong();
    } else if (!text.empty()) {
        ++counters_.messages;
        counters_.bytes += text.size();
        sink_(text);
    }
}

void MessageSplitter::end() {
    handOn(takeRest());
}

void MessageSplitter::cut(const std::string& reason) {
    if (!contents(takeRest()).empty()) {
        dropCut(reason);
    }
}

/// What stands behind the last end. Nothing of a message that was dropped already.
std::string MessageSplitter::takeRest() {
    split();
    std::string rest = std::exchange(buffer_, {});
    rest.erase(0, std::exchange(begin_, 0));
    scanned_ = 0;
    isTooLong_ = false;
    framer_->restart();
    return rest;
}

void MessageSplitter::dropTooLong() {
    ++counters_.tooLong;
    faults_.report("input " + options_.name + ": dropped a message",
                   "longer than " + std::to_string(options_.longest) + " bytes");
}

void MessageSplitter::dropCut(const std::string& reason) {
    ++counters_.cut;
    faults_.report("input " + options_.name + ": dropped an unfinished message", reason);
}

}  // namespace Veskar::Live
