// SPDX-License-Identifier: Apache-2.0
#include "live/transport/FileOutput.h"

#include <veskar-host/InputError.h>

#include "host/recording/RotatingFile.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace Veskar::Live {

class FileOutput::Writer {
public:
    Writer(const std::string& path, Rotation rotation, QueueLimits limits, Faults& faults)
        : name_("output " + path),
          faults_(faults),
          file_(path, "", rotation.after, rotation.kept),
          queue_(limits),
          thread_([this] { run(); }) {}

    ~Writer() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isClosed_ = true;
        }
        hasMessages_.notify_one();
        thread_.join();
    }

    void send(std::string_view message) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ++counters_.accepted;
            queue_.push(std::string(message), message.size());
        }
        hasMessages_.notify_one();
    }

    OutputCounters counters() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        OutputCounters counters = counters_;
        counters.dropped = queue_.dropped();
        counters.waiting = queue_.size() + (writing_ > 0 ? 1 : 0);
        counters.waitingBytes = queue_.bytes() + writing_;
        counters.connections = 1;
        counters.readers = 1;
        return counters;
    }

private:
    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            hasMessages_.wait(lock, [this] { return isClosed_ || !queue_.isEmpty(); });
            if (queue_.isEmpty()) {
                return;
            }
            const std::string message = queue_.pop();
            writing_ = message.size();
            lock.unlock();
            const bool isWritten = write(message);
            lock.lock();
            ++(isWritten ? counters_.written : counters_.failed);
            writing_ = 0;
        }
    }

    bool write(const std::string& message) {
        try {
            file_.append(message);
            return true;
        } catch (const std::system_error& error) {
            faults_.report(name_, error.code().message());
            return false;
        }
    }

    const std::string name_;
    Faults& faults_;
    Host::Internal::RotatingFile file_;  ///< used by the thread only

    mutable std::mutex mutex_;  // guards what follows
    std::condition_variable hasMessages_;
    BoundedQueue<std::string> queue_;
    OutputCounters counters_;
    std::size_t writing_ = 0;  ///< bytes of the message that is being written
    bool isClosed_ = false;
    std::thread thread_;
};

FileOutput::FileOutput(const std::string& path, Rotation rotation, QueueLimits limits,
                       Faults& faults) try
    : writer_(std::make_unique<Writer>(path, rotation, limits, faults)) {
} catch (const std::system_error& error) {
    throw Host::InputError(error.what());
}

FileOutput::~FileOutput() = default;

void FileOutput::send(std::string_view message) {
    writer_->send(message);
}

OutputCounters FileOutput::counters() const {
    return writer_->counters();
}

}  // namespace Veskar::Live
