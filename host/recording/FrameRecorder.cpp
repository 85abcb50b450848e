// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/InputError.h>

#include "host/recording/RecordingHeader.h"
#include "host/recording/RotatingFile.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <limits>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <syslog.h>

namespace Veskar::Host {
namespace {

using Clock = std::chrono::steady_clock;
using Internal::RotatingFile;

std::string headerOf(const Installation& installation, const FrameRecorder::Options& options) {
    Internal::RecordingHeader header;
    static_cast<Installation&>(header) = installation;
    header.name = options.name;
    header.origin = options.origin;
    header.licence = options.licence;
    header.epoch = options.epoch;
    return toJsonLine(header);
}

/// Refuses what a reader would refuse, which has only the text.
class Reader {
public:
    /// @param line of a frame
    /// @throw InputError what is wrong with it behind the lines before
    void read(const std::string& line) {
        const SensorFrame frame = parseSensorFrame(line);
        const auto last = lastTimes_.find(frame.source);
        if (last != lastTimes_.end() && frame.time <= last->second) {
            throw InputError("time: not later than that of the frame before");
        }
        if (frame.received < lastReceived_) {
            throw InputError("received: before the frame before was received");
        }
        frame_ = {frame.source, frame.time, frame.received, {}};
    }
    /// Takes the line that was read last as one of the recording.
    void keep() {
        lastTimes_[frame_.source] = frame_.time;
        lastReceived_ = frame_.received;
    }

private:
    SensorFrame frame_;
    std::map<Source, double> lastTimes_;
    double lastReceived_ = -std::numeric_limits<double>::infinity();
};

}  // namespace

class FrameRecorder::Writer {
public:
    Writer(const std::string& path, const Installation& installation, const Options& options)
        : mostWaiting_(std::max(options.waiting, std::size_t{1})),
          file_(path, headerOf(installation, options), options.rotateAfter, options.keptFiles),
          thread_([this] { run(); }) {}

    ~Writer() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isClosed_ = true;
        }
        hasFrames_.notify_one();
        thread_.join();
    }

    void write(const SensorFrame& frame) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (frames_.size() >= mostWaiting_) {
                ++counts_.dropped;
                isBehind_ = true;
                return;
            }
            frames_.push_back(frame);
        }
        hasFrames_.notify_one();
    }

    Counts counts() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return counts_;
    }

private:
    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            const auto isWork = [this] { return isClosed_ || !frames_.empty(); };
            if (isUnsynced_) {
                hasFrames_.wait_until(lock, nextSync_, isWork);
            } else {
                hasFrames_.wait(lock, isWork);
            }
            if (std::exchange(isBehind_, false)) {
                tellOfDrops();
            }
            if (!frames_.empty()) {
                const SensorFrame frame = std::move(frames_.front());
                frames_.pop_front();
                lock.unlock();
                record(frame);
                lock.lock();
            }
            const bool isOver = isClosed_ && frames_.empty();
            if (isUnsynced_ && (isOver || Clock::now() >= nextSync_)) {
                lock.unlock();
                sync();
                lock.lock();
            }
            if (isOver && frames_.empty()) {
                return;
            }
        }
    }

    void record(const SensorFrame& frame) {
        const std::string line = toJsonLine(frame);
        try {
            reader_.read(line);
        } catch (const InputError& error) {
            tell(&Counts::refused, error.what());
            return;
        }
        try {
            file_.append(line);
        } catch (const std::system_error& error) {
            tell(&Counts::failed, error.what());
            return;
        }
        reader_.keep();
        if (!std::exchange(isUnsynced_, true)) {
            nextSync_ = Clock::now() + std::chrono::seconds(1);
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        ++counts_.written;
        isFaulty_ = false;
    }

    void sync() {
        isUnsynced_ = false;
        try {
            file_.sync();
        } catch (const std::system_error& error) {
            syslog(LOG_ERR, "FrameRecorder: %s\n", error.what());
        }
    }

    /// Logged here and not by write: the system log may keep its callers waiting.
    void tellOfDrops() {
        const Clock::time_point now = Clock::now();
        if (nextTelling_ <= now) {
            nextTelling_ = now + std::chrono::minutes(1);
            syslog(LOG_ERR, "FrameRecorder: Dropped frames that the disk is too slow for\n");
        }
    }

    /// Counts a frame that is not in the recording, and logs the first one of several in a row.
    void tell(std::uint64_t Counts::*count, const char* fault) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++(counts_.*count);
        counts_.lastFault = fault;
        if (!std::exchange(isFaulty_, true)) {
            syslog(LOG_ERR, "FrameRecorder: Left out a frame: %s\n", fault);
        }
    }

    const std::size_t mostWaiting_;
    mutable std::mutex mutex_;  // guards the next six
    std::condition_variable hasFrames_;
    std::deque<SensorFrame> frames_;
    Counts counts_;
    bool isClosed_ = false;
    bool isFaulty_ = false;  ///< the last frame was left out
    bool isBehind_ = false;  ///< frames were dropped of which nothing has been told

    // The thread's own.
    RotatingFile file_;
    Reader reader_;
    bool isUnsynced_ = false;
    Clock::time_point nextSync_;
    Clock::time_point nextTelling_;  ///< of dropped frames
    std::thread thread_;
};

FrameRecorder::FrameRecorder(const std::string& path, const Installation& installation)
    : FrameRecorder(path, installation, Options()) {}

FrameRecorder::FrameRecorder(const std::string& path, const Installation& installation,
                             const Options& options) try
    : writer_(std::make_unique<Writer>(path, installation, options)) {
} catch (const std::system_error& error) {
    throw InputError(error.what());
}

FrameRecorder::~FrameRecorder() = default;

void FrameRecorder::write(const SensorFrame& frame) {
    writer_->write(frame);
}

FrameRecorder::Counts FrameRecorder::counts() const {
    return writer_->counts();
}

}  // namespace Veskar::Host
