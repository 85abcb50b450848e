// SPDX-License-Identifier: Apache-2.0
// Hands items from one thread to another.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <utility>

namespace Workbench {

/// A queue of limited length between one thread that pushes and one that pops. Either side may
/// close it, with the exception that ended its work: the other side gets it.
///
/// To wake a thread costs as much as several items. So whoever waits is woken when the queue is
/// half full or half empty, and looks for itself now and then, so that no item waits for long.
template <typename Item>
class BoundedQueue {
public:
    /// @param capacity items that may wait, at least 1
    explicit BoundedQueue(std::size_t capacity) : capacity_(capacity) {}

    /// Waits while the queue is full.
    /// @param item to append
    /// @return false when the queue was closed, without reason, and the item is dropped
    /// @throw what the queue was closed with
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
    /// @throw what the queue was closed with, once it is empty
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

    /// Ends the traffic. What waits can still be popped. The first reason stays.
    /// @param reason why, if it is a failure
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
            // Not woken: it looked for itself.
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
