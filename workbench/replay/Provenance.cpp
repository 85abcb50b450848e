// SPDX-License-Identifier: Apache-2.0
#include "replay/Provenance.h"

#include <veskar-host/InputError.h>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// @return the setting of a header that differs from the stated digests; null when none does
const char* settingThatDiffers(const RunDigests& stated, const FusedHeader& header) {
    if (stated.camera != header.cameraDigest) {
        return "camera";
    }
    if (stated.configuration != header.configurationDigest) {
        return "configuration";
    }
    return stated.host != header.hostDigest ? "veskarHost" : nullptr;
}

}  // namespace

void Provenance::refuse(const std::string& what, const std::string& remedy) const {
    if (mismatch_ == Mismatch::Refused) {
        throw InputError(fmt::format("{}; {}, or take it as it is with --force", what, remedy));
    }
    warn_(what);
}

void Provenance::warnOfNoDigests(const std::string& file, const std::string& source) const {
    warn_(
        fmt::format("{}: it does not state what it was made from (it was cut off, or an earlier "
                    "version wrote it): whether it belongs to {} is not known",
                    file, source));
}

void Provenance::compareNames(const FusedReader& run, const RecordingReader& recording) const {
    const std::string& made = run.header().name;
    const std::string& name = recording.header().name;
    if (made != name) {
        refuse(
            fmt::format("{}:1: name: these tracks are of the recording \"{}\", not of \"{}\" ({})",
                        run.input().name(), made, name, recording.input().name()),
            "replay that one");
    }
}

void Provenance::compareRun(const FusedReader& run, const RecordingReader& recording) const {
    const std::string& file = run.input().name();
    const std::string& source = recording.input().name();
    const std::optional<RunDigests>& stated = run.digests();
    if (!stated) {
        warnOfNoDigests(file, source);
        return;
    }
    if (stated->recording != recording.digest()) {
        refuse(fmt::format("{}: these tracks were not made from {}, but from another recording or "
                           "an earlier state of it",
                           file, source),
               fmt::format("replay {} again", source));
    }
    if (const char* changed = settingThatDiffers(*stated, run.header())) {
        refuse(fmt::format("{}:1: {}: this is not the one with which these tracks were made from "
                           "{}",
                           file, changed, source),
               fmt::format("replay {} with it", source));
    }
}

void Provenance::compareExplanations(const std::string& explanations,
                                     const std::optional<RunDigests>& stated,
                                     const FusedReader& run,
                                     const RecordingReader& recording) const {
    const std::string& file = run.input().name();
    const std::string& source = recording.input().name();
    if (!stated) {
        warnOfNoDigests(explanations, file);
        return;
    }
    const char* const remedy = "take what replay --explain wrote in the same run";
    if (stated->recording != recording.digest()) {
        refuse(fmt::format("{}: these explanations are of another recording than {}", explanations,
                           source),
               remedy);
        return;
    }
    if (const char* different = settingThatDiffers(*stated, run.header())) {
        refuse(fmt::format("{}: these explanations are of a run with another {} than {}",
                           explanations, different, file),
               remedy);
    }
}

}  // namespace Workbench
