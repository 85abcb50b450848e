// SPDX-License-Identifier: Apache-2.0
// Passes items from one thread to another.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <utility>

namespace Workbench {

/// A queue of limited length between one pushing and one popping thread. Either side may close it,
/// with the exception that ended its work, which the other side then receives.
///
/// Waking a thread costs as much as several items. A waiting thread is therefore notified only when
/// the queue becomes half full or half empty; it also checks the queue at short intervals, so that
/// no item waits for long.
template <typename Item>
class BoundedQueue {
public:
    /// @param capacity maximum number of items, at least 1
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Waits while the queue is full.
    /// @param item item to append
    /// @return false when the queue was closed without exception; the item is dropped
    /// @throw the exception with which the queue was closed
    bool push(Item item) {
        std::unique_lock<std::mutex> lock(mutex_);
        wait(hasRoom_, lock, [&] { return isClosed_ || items_.size() < capacity_; });
        if (isClosed_) {
            rethrow();
            return false;
        }
        items_.push_back(std::move(item));
        const bool isHalfFull = items_.size() == (capacity_ + 1) / 2;
        lock.unlock();
        if (isHalfFull) {
            hasItems_.notify_one();
        }
        return true;
    }

    /// Waits while the queue is empty.
    /// @param item receives the first item
    /// @return false when the queue is empty and closed
    /// @throw the exception with which the queue was closed, once it is empty
    bool pop(Item& item) {
        std::unique_lock<std::mutex> lock(mutex_);
        wait(hasItems_, lock, [&] { return isClosed_ || !items_.empty(); });
        if (items_.empty()) {
            rethrow();
            return false;
        }
        item = std::move(items_.front());
        items_.pop_front();
        const bool isHalfEmpty = items_.size() == capacity_ / 2;
        lock.unlock();
        if (isHalfEmpty) {
            hasRoom_.notify_one();
        }
        return true;
    }

    /// Ends the exchange. Remaining items can still be popped. Only the first call has an effect.
    /// @param reason exception to pass on, if any
    void close(std::exception_ptr reason = nullptr) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (!isClosed_) {
                isClosed_ = true;
                failure_ = std::move(reason);
            }
        }
        hasItems_.notify_one();
        hasRoom_.notify_one();
    }

private:
    template <typename IsOver>
    static void wait(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                     IsOver isOver) {
        constexpr std::chrono::milliseconds patience(20);
        while (!condition.wait_for(lock, patience, isOver)) {
            // Timeout without notification; wait_for has checked the condition.
        }
    }

    void rethrow() const {
        if (failure_) {
            std::rethrow_exception(failure_);
        }
    }

    const std::size_t capacity_;
    std::mutex mutex_;
    std::condition_variable hasItems_;
    std::condition_variable hasRoom_;
    std::deque<Item> items_;
    bool isClosed_ = false;
    std::exception_ptr failure_;
};

}  // namespace Workbench
