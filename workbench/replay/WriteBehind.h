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

/// Turns fused frames into text and writes them, so that the fusion need not wait for either.
/// The frames are written in their order.
class WriteBehind {
public:
    /// How a frame is put into words: appends them to the text.
    using Format = std::function<void(LineText& text, const FusedFrame& frame)>;
    /// When the output hands on what it holds.
    enum class Flush { WhenFull, EveryFrame };

    /// @param output where to write; nobody else may use it before finish
    /// @param format called on the writing thread
    /// @param flush EveryFrame for those who follow a pipe
    WriteBehind(OutputFile& output, Format format, Flush flush = Flush::WhenFull);
    /// Waits until what was given is written.
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
