// SPDX-License-Identifier: Apache-2.0
// Reads fused tracks line by line.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar/Config.h>

#include "io/LineReader.h"
#include "recording/Recording.h"
#include "replay/RunDigests.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Workbench {

class LineParser;

/// The first line of fused tracks.
struct FusedHeader {
    std::string name;                 ///< of the recording
    CameraSetup camera;               ///< as used
    RadarSetup radar;                 ///< as used
    std::string configuration;        ///< JSON text of a configuration of the fusion
    std::string cameraDigest;         ///< as digestOf tells it
    std::string configurationDigest;  ///< as digestOf tells it
    std::string hostDigest;           ///< as digestOfConstants tells it
};

/// The lines of fused tracks, checked. Memory does not depend on their number.
///
/// Every fault is an InputError that starts with "FILE:LINE: ". What is null in the file is NaN.
class FusedReader {
public:
    /// Opens fused tracks and reads their header.
    /// @param path the file, or "-"
    /// @throw InputError when these are no fused tracks that this program reads
    explicit FusedReader(const std::string& path);
    ~FusedReader();
    FusedReader(const FusedReader&) = delete;
    FusedReader& operator=(const FusedReader&) = delete;

    /// @return the header
    const FusedHeader& header() const { return head_; }
    /// @return the configuration of the header
    /// @throw InputError why the fusion refuses it
    Veskar::Config config() const;
    /// @return the next frame; nothing at the end
    /// @throw InputError what is wrong with the line
    std::optional<FusedFrame> next();
    /// @return what the closing line states, once all frames have been read; nothing when there is
    ///         none
    const std::optional<RunDigests>& digests() const { return closing_; }
    /// @return where the reading stands
    const LineReader& input() const { return lines_; }

private:
    void checkOrder(const FusedFrame& frame);

    LineReader lines_;
    std::unique_ptr<LineParser> parser_;
    FusedHeader head_;
    std::optional<double> lastReceived_;
    std::optional<RunDigests> closing_;
};

}  // namespace Workbench
