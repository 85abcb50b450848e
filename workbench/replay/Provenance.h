// SPDX-License-Identifier: Apache-2.0
// Checks that files which are read together were made from each other.
#pragma once

#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"
#include "replay/RunDigests.h"

#include <functional>
#include <optional>
#include <string>

namespace Workbench {

/// How files that do not belong together are handled.
enum class Mismatch { Refused, Forced };

/// Compares the stated origin of files with the files that they are used with. Files without
/// digests are accepted with a warning: they were cut off, or written by an earlier version.
class Provenance {
public:
    /// Receives a warning, without line end.
    using Warn = std::function<void(const std::string&)>;

    /// @param mismatch how files that do not belong together are handled; forced ones are accepted
    ///                 with a warning
    /// @param warn receives the warnings
    Provenance(Mismatch mismatch, Warn warn) : mismatch_(mismatch), warn_(std::move(warn)) {}

    /// Compares the headers, before anything else is read.
    /// @param run fused tracks of a recording
    /// @param recording the recording
    /// @throw InputError when the run was made from another one
    void compareNames(const FusedReader& run, const RecordingReader& recording) const;

    /// Compares the contents, once both files have been read to their ends.
    /// @param run as compareNames
    /// @param recording as compareNames
    /// @throw InputError when the run was made from another one
    void compareRun(const FusedReader& run, const RecordingReader& recording) const;

    /// As compareRun, for explanations of the run.
    /// @param explanations name of their file
    /// @param stated the digests stated in it
    /// @param run the run
    /// @param recording the recording of the run
    /// @throw InputError when they explain another run
    void compareExplanations(const std::string& explanations,
                             const std::optional<RunDigests>& stated, const FusedReader& run,
                             const RecordingReader& recording) const;

private:
    void refuse(const std::string& what, const std::string& remedy) const;
    void warnOfNoDigests(const std::string& file, const std::string& source) const;

    Mismatch mismatch_;
    Warn warn_;
};

}  // namespace Workbench
