// SPDX-License-Identifier: Apache-2.0
// Records the reports of the sensors while a host runs.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Installation.h>
#include <veskar-host/SensorFrame.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Veskar::Host {

/// Writes sensor frames to a recording that `veskar replay` reads, on a thread of its own.
///
/// Every line is handed to the system whole and at once: when the process crashes, the frames that
/// still wait are lost, nothing else. What was written is on the disk a second later at most: a
/// power cut loses the frames of about that second as well, and the last line may then be torn
/// (docs/recording-format.md tells what to do with it). A line that does not fit on the disk is
/// taken back, and the recording goes on when there is room again.
///
/// A frame that would make the recording one that cannot be read is left out: one that is not later
/// than the last one of its sensor, was received before the frame that was written last, comes from
/// neither video nor radar, or holds what is not finite.
///
/// A frame more than an hour ahead of those before it, or more than a second behind them, is held
/// back until the next one of its sensor. When a frame follows that is as far off and within 60 s
/// of it, a clock has been set: a new file begins with both. Otherwise it is left out.
///
/// Faults never reach the host. They are counted and logged at error priority, each cause at most
/// once a minute.
///
/// write and end may be called by one thread at a time, counts by any thread.
class VESKAR_HOST_EXPORT FrameRecorder {
public:
    /// Further fields of the header, and limits.
    struct Options {
        std::string name;                 ///< short name of the recording
        std::string origin = "recorded";  ///< where the data comes from
        std::string licence;              ///< terms of use of the data
        std::optional<double> epoch;      ///< UNIX time of time 0, when known
        /// Bytes of a file after which it is rotated: renamed to FILE.1, what was FILE.1 to FILE.2
        /// and so on. The new file begins with the header. 0: never. With the files that are kept,
        /// the recordings take 1.5 GiB at most.
        std::uint64_t rotateAfter = std::uint64_t{256} << 20;
        std::size_t keptFiles = 5;  ///< rotated files; older ones are removed
        /// Bytes of memory that frames may take which wait for the disk.
        std::size_t waiting = std::size_t{16} << 20;
    };

    /// How many frames went where. One that is held back is counted when that ends.
    struct Counts {
        std::uint64_t written = 0;   ///< stand in the recording
        std::uint64_t dropped = 0;   ///< were too many for the disk or the memory
        std::uint64_t refused = 0;   ///< could not have been read back
        std::uint64_t failed = 0;    ///< could not be written
        std::uint64_t unsynced = 0;  ///< times that the system failed to bring lines to the disk
        std::string lastFault;       ///< the last reason for one of the last three; empty: none
    };

    /// Creates the file and writes the header. A recording that is there is rotated, with the
    /// default options of the other constructor; one without any frame is replaced.
    /// @param path the file
    /// @param installation written into the header
    /// @throw InputError when the file cannot be created, the path is there and no regular file, or
    ///                   the header could not be read back
    FrameRecorder(const std::string& path, const Installation& installation);
    /// As above.
    /// @param path as above
    /// @param installation as above
    /// @param options further fields of the header, and limits
    /// @throw InputError as above
    FrameRecorder(const std::string& path, const Installation& installation,
                  const Options& options);
    /// Writes what waits, and brings it to the disk.
    ~FrameRecorder();
    FrameRecorder(const FrameRecorder&) = delete;
    FrameRecorder& operator=(const FrameRecorder&) = delete;

    /// Hands over a frame; never waits for the disk. When as much waits as may, this one is
    /// dropped: those that wait stand in order, and the gap begins where the disk fell behind.
    /// @param frame in the order of arrival
    void write(const SensorFrame& frame);
    /// Says until when the host waited for frames, which the last line of the recording states: a
    /// replay goes on until then for sensors that were silent. Left out when it is before the last
    /// frame or not finite. Nothing may be written after it.
    /// @param received the last argument of FusionPipeline::advance
    void end(double received);

    /// @return the counts since construction
    Counts counts() const;

private:
    class VESKAR_HOST_NO_EXPORT Writer;

    std::unique_ptr<Writer> writer_;
};

}  // namespace Veskar::Host
