// SPDX-License-Identifier: Apache-2.0
// Reads a recording on a thread of its own.
#pragma once

#include "io/BoundedQueue.h"
#include "recording/RecordingReader.h"

#include <optional>
#include <thread>

namespace Workbench {

/// Reads some lines of a recording in advance, so that whoever works on them need not wait for
/// text. Lines and errors arrive in the same order as without it.
class ReadAhead {
public:
    /// Begins to read.
    /// @param reader where to read; nobody else may use it before this ends
    explicit ReadAhead(RecordingReader& reader);
    /// Stops reading, even from a pipe that is silent.
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// @return as RecordingReader::next
    /// @throw InputError as RecordingReader::next
    std::optional<RecordingLine> next();
    /// @return how much of the recording lies before the line last handed out, 0 to 1; negative
    ///         when that is not known
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
