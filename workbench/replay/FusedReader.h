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

/// The header of fused tracks.
struct FusedHeader {
    std::string name;                 ///< of the recording
    CameraSetup camera;               ///< as used
    RadarSetup radar;                 ///< as used
    std::string configuration;        ///< JSON text of the fusion's configuration
    std::string cameraDigest;         ///< see digestOf
    std::string configurationDigest;  ///< see digestOf
    std::string hostDigest;           ///< see digestOfConstants
    /// JSON text of the host's constants that differ from their defaults; empty when none does
    std::string constants;
};

/// Reads and checks the lines of fused tracks. Memory does not depend on their number.
///
/// Every fault is an InputError with the place "FILE:LINE". Null becomes NaN.
class FusedReader {
public:
    /// Opens fused tracks and reads their header.
    /// @param path the file, or "-"
    /// @throw InputError when these are not fused tracks that this program reads
    explicit FusedReader(const std::string& path);
    ~FusedReader();
    FusedReader(const FusedReader&) = delete;
    FusedReader& operator=(const FusedReader&) = delete;

    /// @return the header
    const FusedHeader& header() const { return head_; }
    /// @return the configuration of the header
    /// @throw InputError why the library rejects it
    Veskar::Config config() const;
    /// @return the next frame; nothing at the end
    /// @throw InputError the fault of the line
    std::optional<FusedFrame> next();
    /// @return the digests of the closing line, once all frames have been read; nothing when there
    ///         is none
    const std::optional<RunDigests>& digests() const { return closing_; }
    /// @return the underlying reader, for its place in the file
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
