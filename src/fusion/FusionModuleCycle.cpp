// SPDX-License-Identifier: Apache-2.0
// Which frames are fused and when, and which reports are left out.
#include <veskar/FusionModule.h>

#include "fusion/FusionModuleState.h"
#include "fusion/ReportFault.h"
#include "track/Dereference.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include <syslog.h>

namespace Veskar {
namespace {

using Tracks = std::vector<std::shared_ptr<Track>>;

/// How far radar may run ahead of video, seconds.
constexpr double radarLead = 0.1;
/// How many radar frames may wait.
constexpr std::size_t longestQueue = 1000;
/// How long a radar frame waits before the host is asked about its clocks, seconds.
constexpr double suspiciousWait = 60.0;

double toSeconds(std::chrono::nanoseconds time) {
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(time);
    return static_cast<double>(whole.count()) / 1e6;
}

/// The faults of a frame's reports.
struct Inspection {
    int notFinite = 0;
    int cannotBeFused = 0;
    bool hasZeroGain = false;  ///< of a report without a fault
};

Inspection inspect(const Tracks& tracks, double timestamp) {
    Inspection found;
    for (const std::shared_ptr<Track>& pointer : tracks) {
        const Track& report = dereference(pointer);
        switch (faultOf(report, timestamp)) {
            case ReportFault::None:
                found.hasZeroGain |= report.probability == 0.0;
                break;
            case ReportFault::NotFinite:
                ++found.notFinite;
                break;
            case ReportFault::CannotBeFused:
                ++found.cannotBeFused;
                break;
        }
    }
    return found;
}

Tracks withoutFaults(const Tracks& tracks, double timestamp) {
    Tracks sound;
    std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(sound),
                 [timestamp](const std::shared_ptr<Track>& report) {
                     return faultOf(dereference(report), timestamp) == ReportFault::None;
                 });
    return sound;
}

}  // namespace

void FusionModule::cycle(Source source, double timestamp, const Tracks& tracks) {
    const double now = toSeconds(clock_());
    if (source != Source::VideoObject && source != Source::Radar) {
        return;
    }
    if (!std::isfinite(timestamp)) {
        syslog(LOG_ERR, "FusionModule: Ignored a frame with a time stamp that is not finite\n");
        return;
    }
    const Inspection found = inspect(tracks, timestamp);
    if (found.notFinite > 0) {
        syslog(LOG_ERR, "FusionModule: Left out %d tracks that are not finite\n", found.notFinite);
    }
    if (found.cannotBeFused > 0) {
        syslog(LOG_ERR, "FusionModule: Left out %d tracks that cannot be fused\n",
               found.cannotBeFused);
    }
    if (found.hasZeroGain && arrivals_->zeroGain.allows(now)) {
        syslog(LOG_WARNING,
               "FusionModule: A track with probability 0 makes that of its system track NaN for "
               "good; set Track::probability to the gain of the report\n");
    }
    if (found.notFinite + found.cannotBeFused == 0) {
        admit(source, timestamp, tracks, now);
    } else {
        admit(source, timestamp, withoutFaults(tracks, timestamp), now);
    }
}

/// Holds back a frame far from the others in time until the next one confirms or contradicts it.
void FusionModule::admit(Source source, double timestamp, const Tracks& tracks, double now) {
    const auto previous = std::exchange(arrivals_->heldBack, std::nullopt);
    const TimeBase::Verdict verdict = arrivals_->timeBase.judge(timestamp);
    if (verdict == TimeBase::Verdict::HoldBack) {
        syslog(LOG_ERR, "FusionModule: Held back a frame far from the others in time\n");
        arrivals_->heldBack = {source, timestamp, tracks};
        return;
    }
    if (verdict == TimeBase::Verdict::Restart && previous) {
        syslog(LOG_ERR, "FusionModule: Restarted on a new time base\n");
        clear();
        radarFrameQueue_.clear();
        lastVideoTimestamp_ = 0.0;
        arrivals_->lastTimestamps.clear();
        deliver(previous->source, previous->timestamp, previous->tracks, now);
    }
    deliver(source, timestamp, tracks, now);
}

void FusionModule::deliver(Source source, double timestamp, const Tracks& tracks, double now) {
    const auto [last, isFirst] = arrivals_->lastTimestamps.try_emplace(source, timestamp);
    if (timestamp < last->second && arrivals_->olderFrame.allows(now)) {
        syslog(LOG_WARNING, "FusionModule: A %s frame is older than the one before it\n",
               source == Source::VideoObject ? "video" : "radar");
    }
    last->second = timestamp;

    if (source == Source::VideoObject) {
        // First, so that video time also advances when the frame fails; no step of it reads this.
        lastVideoTimestamp_ = timestamp;
        cycleFrame(Source::VideoObject, timestamp, tracks);
    } else {
        radarFrameQueue_.push_back({timestamp, tracks, now});
        drainRadarQueue(now);
        watchRadarQueue(now);
    }
}

bool FusionModule::isFarInTime(double timestamp) const {
    return arrivals_->timeBase.isFar(timestamp);
}

bool FusionModule::waitsForVideo(double timestamp) const {
    return !isFarInTime(timestamp) && timestamp >= lastVideoTimestamp_ + radarLead;
}

/// Strictly first in, first out: a frame that must wait holds up those behind it.
void FusionModule::drainRadarQueue(double now) {
    while (!radarFrameQueue_.empty() && now - radarFrameQueue_.front().timestamp > radarMaxWait_) {
        fuseOldestRadarFrame();
    }
    while (!radarFrameQueue_.empty() &&
           radarFrameQueue_.front().timestamp < lastVideoTimestamp_ + radarLead) {
        fuseOldestRadarFrame();
    }
}

/// Takes the frame off the queue first: one that fails is never tried again.
void FusionModule::fuseOldestRadarFrame() {
    const CycleFrame frame = std::move(radarFrameQueue_.front());
    radarFrameQueue_.pop_front();
    cycleFrame(Source::Radar, frame.timestamp, frame.tracks);
}

/// Looks at the frames that still wait: video time may never reach them.
void FusionModule::watchRadarQueue(double now) {
    if (radarFrameQueue_.size() > longestQueue) {
        radarFrameQueue_.pop_front();
        if (arrivals_->radarDropped.allows(now)) {
            syslog(LOG_ERR, "FusionModule: Dropped radar frames that waited too long\n");
        }
    }
    if (!radarFrameQueue_.empty() && now - radarFrameQueue_.front().arrival > suspiciousWait &&
        arrivals_->radarWaits.allows(now)) {
        syslog(LOG_WARNING,
               "FusionModule: Radar frames have waited for video time for more than a minute; is "
               "radar stamped in UNIX time and video in uptime?\n");
    }
}

}  // namespace Veskar
