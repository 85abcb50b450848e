// SPDX-License-Identifier: Apache-2.0
// Inputs that several subcommands read.
#pragma once

#include <veskar/Config.h>

#include "recording/LabelWords.h"
#include "recording/Recording.h"
#include "replay/Provenance.h"

#include <string>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Workbench {

/// Warns on standard error of what the fusion does not use as it is written.
///
/// @param path a configuration file; empty: the shipped configuration
/// @return the configuration
/// @throw InputError why the fusion refuses it
Veskar::Config readConfiguration(const std::string& path);

/// @param header header of a recording
/// @param cameraPath a camera to use instead of the recording's; empty: the recording's
/// @return the header with that camera
/// @throw InputError what is wrong with the camera
RecordingHeader withCamera(RecordingHeader header, const std::string& cameraPath);

/// @param name of the file that the words come from
/// @return what warns on standard error, once each, of words outside the vocabulary
UnknownWords wordsToWarnOf(const std::string& name);

/// Adds the option that takes files together which were not made from each other.
/// @param command the subcommand
/// @param force receives whether the option was given
/// @return the option
CLI::Option* addForceOption(CLI::App& command, bool& force);

/// @param force the value of the option
/// @return what compares files; its warnings go to standard error
Provenance provenanceFor(bool force);

}  // namespace Workbench
