// SPDX-License-Identifier: Apache-2.0
// Writes fused frames on a thread of its own.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "HostLibrary.h"
#include "host/json/LineText.h"
#include "io/BoundedQueue.h"
#include "io/OutputFile.h"

#include <functional>
#include <thread>

namespace Workbench {

/// Formats and writes fused frames, so that the fusion waits for neither. The order of the frames
/// is kept.
class WriteBehind {
public:
    /// Appends the text of a frame.
    using Format = std::function<void(LineText& text, const FusedFrame& frame)>;
    /// When the buffered output is written.
    enum class Flush { WhenFull, EveryFrame };

    /// @param output must not be used by others until finish returns
    /// @param format called on the writing thread
    /// @param flush EveryFrame for readers of a pipe
    WriteBehind(OutputFile& output, Format format, Flush flush = Flush::WhenFull);
    /// Waits until all frames are written.
    ~WriteBehind();
    WriteBehind(const WriteBehind&) = delete;
    WriteBehind& operator=(const WriteBehind&) = delete;

    /// @param frame to be written
    /// @throw InputError when an earlier frame could not be written
    void write(FusedFrame frame);
    /// Waits until all frames are written. The output may be used again.
    /// @throw InputError when a frame could not be written
    void finish();

private:
    void run();

    OutputFile& output_;
    Format format_;
    Flush flush_;
    BoundedQueue<FusedFrame> queue_;
    std::exception_ptr failure_;
    std::thread thread_;
};

}  // namespace Workbench
