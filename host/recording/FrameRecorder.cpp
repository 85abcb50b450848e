// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/InputError.h>

#include "host/installation/HeaderFields.h"
#include "host/installation/RecordingHeader.h"
#include "host/json/JanssonValue.h"
#include "host/json/LineText.h"
#include "host/recording/FrameChecks.h"
#include "host/recording/RotatingFile.h"

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <syslog.h>

namespace Veskar::Host {
namespace {

using Clock = std::chrono::steady_clock;
using Internal::RotatingFile;

/// @throw InputError when the header could not be read back, or not as the same
std::string headerOf(const Installation& installation, const FrameRecorder::Options& options) {
    Internal::RecordingHeader header;
    static_cast<Installation&>(header) = installation;
    header.name = options.name;
    header.origin = options.origin;
    header.licence = options.licence;
    header.epoch = options.epoch;
    std::string line = toJsonLine(header);
    const Internal::JsonDocument document(line);
    const Internal::BasicFields<Internal::JanssonValue> fields(document.root());
    if (toJsonLine(Internal::readHeader(fields)) != line) {
        throw InputError("the header of the recording holds a number that is not finite");
    }
    return line;
}

/// @return about how much memory a copy of the frame takes
std::size_t memoryOf(const SensorFrame& frame) {
    return sizeof(SensorFrame) + frame.tracks.size() * sizeof(Report);
}

/// Lets one cause into the system log at most once a minute.
class LogLimit {
public:
    bool allows() {
        const Clock::time_point now = Clock::now();
        if (next_ && now < *next_) {
            return false;
        }
        next_ = now + std::chrono::minutes(1);
        return true;
    }

private:
    std::optional<Clock::time_point> next_;
};

/// A line that can be read, and the stamps that stand in it.
struct Line {
    std::string text;
    SensorFrame frame;  ///< without tracks
};

/// @throw InputError what a reader would refuse, who has only the text
Line lineOf(const SensorFrame& frame) {
    Line line{toJsonLine(frame), {}};
    line.frame = parseSensorFrame(line.text);
    line.frame.tracks.clear();
    return line;
}

/// @return whether two frames that are far from those before them share a time base
bool agree(const SensorFrame& first, const SensorFrame& second) {
    constexpr double agreement = 60.0;
    return std::abs(second.time - first.time) <= agreement &&
           std::abs(second.received - first.received) <= agreement;
}

}  // namespace

class FrameRecorder::Writer {
public:
    Writer(const std::string& path, const Installation& installation, const Options& options)
        : mostWaiting_(options.waiting),
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
        try {
            enqueue(frame);
        } catch (const std::bad_alloc&) {
            const std::lock_guard<std::mutex> lock(mutex_);
            drop();
        }
        hasFrames_.notify_one();
    }

    void end(double received) {
        const std::lock_guard<std::mutex> lock(mutex_);
        end_ = received;
    }

    Counts counts() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return counts_;
    }

private:
    void enqueue(SensorFrame frame) {
        const std::size_t memory = memoryOf(frame);
        const std::lock_guard<std::mutex> lock(mutex_);
        // One frame may always wait.
        if (!frames_.empty() && waiting_ + memory > mostWaiting_) {
            drop();
            return;
        }
        frames_.push_back(std::move(frame));
        waiting_ += memory;
    }

    void drop() {
        ++counts_.dropped;
        isBehind_ = true;
    }

    /// The lock is held only to look at what waits: neither the disk nor the system log, which may
    /// keep its callers waiting, can hold up the host.
    void run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (bool isOver = false; !isOver;) {
            const auto isWork = [this] { return isClosed_ || !frames_.empty(); };
            if (isUnsynced_) {
                hasFrames_.wait_until(lock, nextSync_, isWork);
            } else {
                hasFrames_.wait(lock, isWork);
            }
            const bool isBehind = std::exchange(isBehind_, false);
            std::optional<SensorFrame> frame;
            if (!frames_.empty()) {
                waiting_ -= memoryOf(frames_.front());
                frame = std::move(frames_.front());
                frames_.pop_front();
            }
            isOver = isClosed_ && frames_.empty();
            lock.unlock();
            if (isBehind && dropLog_.allows()) {
                syslog(LOG_ERR, "FrameRecorder: Dropped frames that the disk is too slow for\n");
            }
            if (frame) {
                record(*frame);
            }
            if (isOver) {
                refuseHeldBack();
                recordEnd();
            }
            if (isUnsynced_ && (isOver || Clock::now() >= nextSync_)) {
                sync();
            }
            lock.lock();
        }
    }

    void record(const SensorFrame& frame) {
        try {
            Line line = lineOf(frame);
            if (order_.isFar(line.frame)) {
                recordFar(std::move(line));
                return;
            }
            if (heldBack_ && heldBack_->frame.source == frame.source) {
                refuseHeldBack();
            }
            order_.check(line.frame);
            append(line);
        } catch (const InputError& error) {
            leaveOut(&Counts::refused, refusedLog_, error.what());
        } catch (const std::exception& error) {
            leaveOut(&Counts::failed, failedLog_, error.what());
        }
    }

    /// As the fusion judges time bases, but for every sensor by itself: one stamp far from the
    /// others is a fault, two that agree are a clock that was set.
    void recordFar(Line line) {
        if (!heldBack_ || !agree(heldBack_->frame, line.frame)) {
            refuseHeldBack();
            heldBack_ = std::move(line);
            return;
        }
        Internal::FrameOrder order;
        order.take(heldBack_->frame);
        order.check(line.frame);
        file_.rotate();
        order_ = Internal::FrameOrder();
        append(*heldBack_);
        heldBack_.reset();
        append(line);
    }

    void refuseHeldBack() {
        if (heldBack_) {
            heldBack_.reset();
            leaveOut(&Counts::refused, refusedLog_, "time: far from that of the others");
        }
    }

    void recordEnd() {
        if (!end_ || !order_.mayEnd(*end_)) {
            return;
        }
        try {
            file_.append(R"({"end":)" + Internal::shortestText(*end_) + "}\n");
            isUnsynced_ = true;
        } catch (const std::exception& error) {
            leaveOut(&Counts::failed, failedLog_, error.what());
        }
    }

    void append(const Line& line) {
        file_.append(line.text);
        order_.take(line.frame);
        if (!std::exchange(isUnsynced_, true)) {
            nextSync_ = Clock::now() + std::chrono::seconds(1);
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        ++counts_.written;
    }

    void sync() {
        isUnsynced_ = false;
        try {
            file_.sync();
        } catch (const std::exception& error) {
            count(&Counts::unsynced, error.what());
            if (syncLog_.allows()) {
                syslog(LOG_ERR, "FrameRecorder: Failed to bring frames to the disk: %s\n",
                       error.what());
            }
        }
    }

    void leaveOut(std::uint64_t Counts::*counter, LogLimit& limit, const char* fault) {
        count(counter, fault);
        if (limit.allows()) {
            syslog(LOG_ERR, "FrameRecorder: Left out a frame: %s\n", fault);
        }
    }

    void count(std::uint64_t Counts::*counter, const char* fault) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++(counts_.*counter);
        try {
            counts_.lastFault = fault;
        } catch (const std::bad_alloc&) {
            // The count tells of it.
        }
    }

    const std::size_t mostWaiting_;
    mutable std::mutex mutex_;  // guards the next seven members
    std::condition_variable hasFrames_;
    std::deque<SensorFrame> frames_;
    std::size_t waiting_ = 0;  ///< memory of the frames, bytes
    Counts counts_;
    bool isClosed_ = false;
    std::optional<double> end_;
    bool isBehind_ = false;  ///< frames were dropped of which nothing has been told

    // Used by the writer's thread only.
    RotatingFile file_;
    Internal::FrameOrder order_;
    std::optional<Line> heldBack_;  ///< far from the frames before it
    bool isUnsynced_ = false;
    Clock::time_point nextSync_;
    LogLimit dropLog_;
    LogLimit refusedLog_;
    LogLimit failedLog_;
    LogLimit syncLog_;
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

void FrameRecorder::end(double received) {
    writer_->end(received);
}

FrameRecorder::Counts FrameRecorder::counts() const {
    return writer_->counts();
}

}  // namespace Veskar::Host
