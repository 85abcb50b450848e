// SPDX-License-Identifier: Apache-2.0
#include "cli/Completion.h"

#include <fmt/format.h>

namespace Workbench {
namespace {

std::string joined(const std::vector<std::string>& words, const char* between = " ") {
    return fmt::format("{}", fmt::join(words, between));
}

std::string placeOf(const CommandEntry& command) {
    return joined(command.path, "/");
}

std::string namesOf(const CommandEntry& command) {
    std::vector<std::string> names;
    for (const OptionEntry& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return joined(names);
}

/// What bash and zsh share: a shell's case statements.
struct Cases {
    std::string commands;     ///< place/word: the place of the command that the word names
    std::string values;       ///< place:option: sets `values`
    std::string suggestions;  ///< place: sets `options` and `commands`
};

Cases casesOf(const std::vector<CommandEntry>& tree) {
    Cases cases;
    for (const CommandEntry& command : tree) {
        const std::string place = placeOf(command);
        if (command.path.size() > 1) {
            cases.commands += fmt::format("      {0}) place={0} ;;\n", place);
        }
        for (const OptionEntry& option : command.options) {
            if (option.takesValue) {
                const std::string either = "|" + place + ":";
                cases.values +=
                    fmt::format("    {}:{}) isValue=1 values='{}' ;;\n", place,
                                joined(option.names, either.c_str()), joined(option.values));
            }
        }
        cases.suggestions += fmt::format("    {}) options='{}' commands='{}' ;;\n", place,
                                         namesOf(command), joined(command.commands));
    }
    return cases;
}

/// A word in single quotes for fish.
std::string fishWord(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
    return result + "'";
}

}  // namespace

std::string completionForBash(const std::vector<CommandEntry>& tree) {
    const Cases cases = casesOf(tree);
    return fmt::format(R"(# bash completion for veskar
_veskar() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}}
  local place=veskar word isValue='' values='' options='' commands=''
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case $place/$word in
{}    esac
  done
  case $place:$previous in
{}  esac
  case $place in
{}  esac
  COMPREPLY=()
  if [ -n "$isValue" ]; then
    mapfile -t COMPREPLY < <(compgen -W "$values" -- "$current")
  elif [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  else
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$current")
  fi
}}
complete -o default -F _veskar veskar
)",
                       cases.commands, cases.values, cases.suggestions);
}

std::string completionForZsh(const std::vector<CommandEntry>& tree) {
    const Cases cases = casesOf(tree);
    return fmt::format(R"(#compdef veskar
local place=veskar word isValue='' values='' options='' commands=''
for word in "${{(@)words[2,CURRENT-1]}}"; do
    case $place/$word in
{}    esac
done
case $place:${{words[CURRENT-1]}} in
{}esac
case $place in
{}esac
if [[ -n $values ]]; then
  compadd -- ${{=values}}
elif [[ -n $isValue ]]; then
  _files
elif [[ $PREFIX == -* ]]; then
  compadd -- ${{=options}}
elif [[ -n $commands ]]; then
  compadd -- ${{=commands}}
else
  _files
fi
)",
                       cases.commands, cases.values, cases.suggestions);
}

std::string completionForFish(const std::vector<CommandEntry>& tree) {
    std::string text = "# fish completion for veskar\n";
    for (const CommandEntry& command : tree) {
        std::string given;
        for (std::size_t i = 1; i < command.path.size(); ++i) {
            given += (i == 1 ? "" : "; and ") + ("__fish_seen_subcommand_from " + command.path[i]);
        }
        if (!command.commands.empty()) {
            given += given.empty() ? "" : "; and ";
            given += "not __fish_seen_subcommand_from " + joined(command.commands);
        }
        const std::string where = fishWord(given);
        for (const std::string& name : command.commands) {
            text += fmt::format("complete -c veskar -f -n {} -a {}\n", where, name);
        }
        for (const OptionEntry& option : command.options) {
            text += "complete -c veskar -n " + where;
            for (const std::string& name : option.names) {
                text += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            text += option.takesValue ? " -r" : "";
            text += option.values.empty() ? "" : " -f -a " + fishWord(joined(option.values));
            text += " -d " + fishWord(option.description) + "\n";
        }
    }
    return text;
}

}  // namespace Workbench
