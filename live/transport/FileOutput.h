// SPDX-License-Identifier: Apache-2.0
// Messages to a file that is rotated.
#pragma once

#include "live/transport/Faults.h"
#include "live/transport/Output.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Veskar::Live {

/// Writes messages to a file on a thread of its own: flash memory may keep its writers waiting for
/// seconds. A file that is there already is rotated. A message that does not fit on the disk is
/// taken back and counted, and writing goes on when there is room again. The system decides when
/// lines reach the disk.
class FileOutput : public Output {
public:
    /// How large files become.
    struct Rotation {
        std::uint64_t after = std::uint64_t{64} << 20;  ///< bytes of a file; 0: no limit
        std::size_t kept = 5;                           ///< rotated files; older ones are removed
    };

    /// @param path the file
    /// @param rotation how large files become
    /// @param limits of what waits for the disk
    /// @param faults receives write errors, also from the output's thread; must outlive it
    /// @throw InputError when the file cannot be created
    FileOutput(const std::string& path, Rotation rotation, QueueLimits limits, Faults& faults);
    /// Writes what waits.
    ~FileOutput() override;
    FileOutput(const FileOutput&) = delete;
    FileOutput& operator=(const FileOutput&) = delete;

    void send(std::string_view message) override;
    OutputCounters counters() const override;

private:
    class Writer;

    std::unique_ptr<Writer> writer_;
};

}  // namespace Veskar::Live
