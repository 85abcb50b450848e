// SPDX-License-Identifier: Apache-2.0
// What waits for a reader that is away.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

namespace Veskar::Live {

/// How much may wait.
struct QueueLimits {
    std::size_t messages = 1000;
    std::size_t bytes = std::size_t{8} << 20;
};

/// A queue that makes room by dropping what is oldest: a reader that comes back wants to know what
/// is now. Not for several threads.
template <typename Item>
class BoundedQueue {
public:
    /// @param limits how much may wait
    explicit BoundedQueue(QueueLimits limits) : limits_(limits) {}

    /// @param item appended
    /// @param bytes what it counts for; more than may wait at all: it is dropped itself
    void push(Item item, std::size_t bytes) {
        entries_.push_back({std::move(item), bytes});
        bytes_ += bytes;
        makeRoom();
    }
    /// Puts back what was taken: it is the oldest.
    void putBack(Item item, std::size_t bytes) {
        entries_.push_front({std::move(item), bytes});
        bytes_ += bytes;
        makeRoom();
    }
    /// @return the oldest item; there must be one
    Item pop() {
        Item item = std::move(entries_.front().item);
        bytes_ -= entries_.front().bytes;
        entries_.pop_front();
        return item;
    }

    bool isEmpty() const { return entries_.empty(); }
    /// @return messages that wait
    std::size_t size() const { return entries_.size(); }
    /// @return bytes that wait
    std::size_t bytes() const { return bytes_; }
    /// @return how many were dropped since construction
    std::uint64_t dropped() const { return dropped_; }
    /// Counts what waits as dropped.
    void clear() {
        dropped_ += entries_.size();
        entries_.clear();
        bytes_ = 0;
    }

private:
    struct Entry {
        Item item;
        std::size_t bytes;
    };

    void makeRoom() {
        while (entries_.size() > limits_.messages || bytes_ > limits_.bytes) {
            bytes_ -= entries_.front().bytes;
            entries_.pop_front();
            ++dropped_;
        }
    }

    QueueLimits limits_;
    std::deque<Entry> entries_;
    std::size_t bytes_ = 0;
    std::uint64_t dropped_ = 0;
};

}  // namespace Veskar::Live
