// SPDX-License-Identifier: Apache-2.0
#include "live/service/SensorFeed.h"

#include <veskar-host/InputError.h>

#include <exception>
#include <utility>

namespace Veskar::Live {

SensorFeed::SensorFeed(const SensorSettings& settings, const Host::Installation& installation,
                       Faults& faults, Sink sink)
    : name_(settings.name),
      faults_(faults),
      sink_(std::move(sink)),
      decoder_(FrameDecoder::make(settings, installation)),
      clock_(settings.clock, faults) {}

void SensorFeed::receive(const Message& message, Utc utc) {
    std::vector<StampedFrame> stamped;
    try {
        stamped = decoder_->decode(message);
    } catch (const Host::InputError& error) {
        ++refused_;
        faults_.report("input " + name_ + ": refused a message", error.what());
        return;
    } catch (const std::exception& error) {
        // Such as want of memory: the next message may do with less.
        ++refused_;
        faults_.report("input " + name_ + ": failed on a message", error.what());
        return;
    }
    for (StampedFrame& one : stamped) {
        ++frames_;
        const SensorClock::Utc stamp{
            std::chrono::duration_cast<SensorClock::Utc::duration>(one.time)};
        if (const auto time = clock_.place(stamp, {message.arrived, utc})) {
            using std::chrono::microseconds;
            const auto since = std::chrono::floor<microseconds>(time->time_since_epoch());
            one.frame.time = static_cast<double>(since.count()) / 1e6;
            sink_(std::move(one.frame));
        }
    }
}

}  // namespace Veskar::Live
