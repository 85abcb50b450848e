// SPDX-License-Identifier: Apache-2.0
// What the program tells whoever watches it, beside its answer.
#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}  // namespace CLI

namespace Workbench {

/// What the user wants to see. The defaults are those of a program that nobody has told anything.
struct TerminalSettings {
    bool isQuiet = false;        ///< neither warnings nor progress nor the library's messages
    bool isVerbose = false;      ///< also how long each step took
    bool hasProgress = true;     ///< progress bars where there is a terminal
    std::string color = "auto";  ///< or "always", "never"
};

/// @return the settings of the program; written while the arguments are parsed, by one thread
TerminalSettings& terminalSettings();

/// Adds the options for these settings to every command that takes options.
/// @param program the program with all its commands
void addTerminalOptions(CLI::App& program);

/// What a word stands for.
enum class Tone { Fault, Warning, Note };

/// @param text a word
/// @param tone its colour
/// @param descriptor where it goes. With "auto", only terminals get colours, and none where
///                   NO_COLOR is set (no-color.org) or TERM is "dumb".
/// @return the text, in colour where that is wanted
std::string colored(std::string_view text, Tone tone, int descriptor);

}  // namespace Workbench
