// SPDX-License-Identifier: Apache-2.0
// Reads a recording line by line.
#pragma once

#include "host/recording/FrameChecks.h"
#include "io/Digest.h"
#include "io/LineReader.h"
#include "io/LineValue.h"
#include "recording/Excerpt.h"
#include "recording/Recording.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace Workbench {

class ExcerptFilter;
class LineParser;

/// Whether a reader returns the truth lines of a recording or skips them without parsing.
enum class TruthLines { Read, Skip };

/// Reads and checks the lines of a recording. Memory does not depend on its length.
///
/// Every fault is an InputError with the place "FILE:LINE". If the values of a faulty sensor
/// frame could be parsed, it is a RefusedFrame.
class RecordingReader {
public:
    /// Receives the first line before it is parsed, empty when there is none.
    using FirstLine = std::function<void(std::string_view)>;

    /// Opens a recording and reads its header.
    /// @param path the file, or "-"
    /// @param truthLines how truth lines are handled
    /// @param firstLine called with the text of the header, if set
    /// @throw InputError when it is not a recording that this program reads
    explicit RecordingReader(const std::string& path, TruthLines truthLines = TruthLines::Read,
                             const FirstLine& firstLine = nullptr);
    ~RecordingReader();
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;

    /// From now on reads as if the recording had only an excerpt; before the first line is read.
    /// @param excerpt the part to keep
    void keepOnly(const Excerpt& excerpt);
    /// @return the header
    const RecordingHeader& header() const { return head_; }
    /// @return the next frame; nothing at the end
    /// @throw InputError the fault of the line, or that no sensor frame is in the excerpt
    std::optional<RecordingLine> next();
    /// @return until when the sensors were awaited, s, by the clock of SensorFrame::received;
    ///         nothing before the end, and when the recording does not say it
    std::optional<double> end() const { return end_; }
    /// @return digest of the header, the sensor frames and the end read so far: of their lines in
    ///         file order, each without its line end and followed by a line feed
    std::string digest() const { return content_.text(); }
    /// As LineReader::stop.
    void stop() { lines_.stop(); }
    /// @return the underlying reader, for its place in the file
    const LineReader& input() const { return lines_; }

private:
    std::optional<RecordingLine> parse(std::string_view text);
    std::optional<RecordingLine> readLine(const LineFields& fields);
    void readEnd(const LineFields& fields);
    void endExcerpt();
    void digestLine(std::string_view text);
    void checkOrder(const SensorFrame& frame);
    void checkOrder(const TruthFrame& frame);

    LineReader lines_;
    std::unique_ptr<LineParser> parser_;
    TruthLines truthLines_;
    RecordingHeader head_;
    std::unique_ptr<ExcerptFilter> filter_;  ///< of an excerpt
    bool isOver_ = false;                    ///< whether the excerpt is
    Digest content_;
    FrameOrder order_;
    std::optional<double> lastTruth_;
    std::optional<double> end_;
};

}  // namespace Workbench
