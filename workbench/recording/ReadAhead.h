// SPDX-License-Identifier: Apache-2.0
// Reads a recording on a thread of its own.
#pragma once

#include "io/BoundedQueue.h"
#include "recording/RecordingReader.h"

#include <optional>
#include <thread>

namespace Workbench {

/// Reads some lines of a recording in advance, so that reading and processing overlap. Lines and
/// errors come in the same order as without it.
class ReadAhead {
public:
    /// Starts reading.
    /// @param reader must not be used by others until this is destroyed
    explicit ReadAhead(RecordingReader& reader);
    /// Stops reading, even when waiting for a pipe.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// @return as RecordingReader::next
    /// @throw InputError as RecordingReader::next
    std::optional<RecordingLine> next();
    /// @return as RecordingReader::end; asked for when next has given nothing
    std::optional<double> end() const { return reader_.end(); }
    /// @return how much of the recording was handed out before the last line, 0 to 1; negative when
    ///         unknown
    double fractionRead() const { return fraction_; }

private:
    struct Item {
        RecordingLine line;
        double fraction = 0.0;
    };
    void read();

    RecordingReader& reader_;
    BoundedQueue<Item> queue_;
    double fraction_ = 0.0;
    std::thread thread_;
};

}  // namespace Workbench
