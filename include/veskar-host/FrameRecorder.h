// SPDX-License-Identifier: Apache-2.0
// Writes down what the sensors report while a host runs.
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

/// Writes sensor frames to a recording, as `veskar replay` reads it, on a thread of its own.
///
/// Every line is handed to the system whole and at once, so that a crash of the process loses no
/// more than the frames that still wait; it is on the disk a second later at most. A line that does
/// not fit on the disk is taken back, and the recording goes on when there is room again.
///
/// A frame that would make the recording one that cannot be read is left out: one that is not later
/// than the last one of its sensor, was received before the frame that was written last, or holds
/// what is not finite.
///
/// Faults never reach the host. They are counted and logged at error priority when they begin.
///
/// write is for one thread at a time; counts may be called from any.
class VESKAR_HOST_EXPORT FrameRecorder {
public:
    /// What the header says beside the installation, and limits.
    struct Options {
        std::string name;                 ///< short name of the recording
        std::string origin = "recorded";  ///< where the data comes from
        std::string licence;              ///< under which terms
        std::optional<double> epoch;      ///< UNIX time of time 0, when known
        /// Bytes of a file after which it is rotated: renamed to FILE.1, what was FILE.1 to FILE.2
        /// and so on. The new file begins with the header. 0: never.
        std::uint64_t rotateAfter = 0;
        std::size_t keptFiles = 5;   ///< rotated files; older ones are removed
        std::size_t waiting = 1000;  ///< frames that may wait for the disk
    };

    /// How many frames went where.
    struct Counts {
        std::uint64_t written = 0;  ///< stand in the recording
        std::uint64_t dropped = 0;  ///< were too many for the disk: the queue was full
        std::uint64_t refused = 0;  ///< could not have been read back
        std::uint64_t failed = 0;   ///< could not be written
        std::string lastFault;      ///< why one was refused or failed; empty: never
    };

    /// Creates the file and writes the header. A file that is there is rotated.
    /// @param path the file
    /// @param installation written into the header
    /// @throw InputError when the file cannot be created
    FrameRecorder(const std::string& path, const Installation& installation);
    /// As above.
    /// @param path as above
    /// @param installation as above
    /// @param options what else the header says, and limits
    /// @throw InputError as above
    FrameRecorder(const std::string& path, const Installation& installation,
                  const Options& options);
    /// Writes what waits.
    ~FrameRecorder();
    FrameRecorder(const FrameRecorder&) = delete;
    FrameRecorder& operator=(const FrameRecorder&) = delete;

    /// Hands over a frame; never waits for the disk. When as many frames wait as may, this one is
    /// dropped: those that wait stand in order, and the gap begins where the disk fell behind.
    /// @param frame in the order of arrival
    void write(const SensorFrame& frame);

    /// @return what happened so far
    Counts counts() const;

private:
    class Writer;

    std::unique_ptr<Writer> writer_;
};

}  // namespace Veskar::Host
