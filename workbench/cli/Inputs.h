// SPDX-License-Identifier: Apache-2.0
// Inputs that several subcommands read.
#pragma once

#include <veskar-host/HostParameters.h>
#include <veskar/Config.h>

#include "recording/LabelWords.h"
#include "recording/Recording.h"
#include "replay/Provenance.h"

#include <array>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Workbench {

/// The configuration and parameters of a run.
struct Settings {
    Veskar::Config config;
    HostParameters parameters;
};

/// Adds the options for the configuration and for single values.
/// @param command the subcommand
/// @param config receives the path of the configuration
/// @param changes receives the single values, as "KEY=VALUE"
/// @return the options
std::array<CLI::Option*, 2> addSettingsOptions(CLI::App& command, std::string& config,
                                               std::vector<std::string>& changes);

/// Reads the settings. Warns on standard error of values that the fusion does not use as written.
///
/// @param path a configuration file; empty: the shipped configuration
/// @param changes "KEY=VALUE": a parameter of the host, or a key of the configuration with its
///                section before it ("veskarModule.gatingDistance"); the value is JSON
/// @return the settings
/// @throw InputError why they are rejected
Settings readSettings(const std::string& path, const std::vector<std::string>& changes);

/// @param header header of a recording
/// @param cameraPath a camera to use instead of the recording's; empty: the recording's
/// @return the header with that camera
/// @throw InputError the fault of the camera
RecordingHeader withCamera(RecordingHeader header, const std::string& cameraPath);

/// @param name name of the file that contains the words
/// @return checker that warns on standard error of words outside the vocabulary, once each
UnknownWords wordsToWarnOf(const std::string& name);

/// Adds the option that permits combining files that were not made from each other.
/// @param command the subcommand
/// @param force receives whether the option was given
/// @return the option
CLI::Option* addForceOption(CLI::App& command, bool& force);

/// @param force the value of the option
/// @return the comparison of files; its warnings go to standard error
Provenance provenanceFor(bool force);

}  // namespace Workbench
