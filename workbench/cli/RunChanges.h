// SPDX-License-Identifier: Apache-2.0
// The values that --set gives `veskar run` and `veskar record`.
#pragma once

#include <string>
#include <vector>

namespace Workbench {

/// Changes by the document that they change, each "KEY=VALUE".
struct RunChanges {
    std::vector<std::string> ofRun;
    std::vector<std::string> ofFusion;

    /// @param changes of both documents
    /// @return the same; those that run.json has no section for are the fusion's
    /// @throw InputError for a key that seems to be a misspelt one of run.json
    static RunChanges of(const std::vector<std::string>& changes);
};

/// @param path run.json
/// @param changes of it: names of members and indices of items, with dots between them, and behind
///                "=" a JSON value, or a text without quotation marks
/// @return its text with these members changed or added
/// @throw InputError when it cannot be read, or a change is for no place in it
std::string readChanged(const std::string& path, const std::vector<std::string>& changes);

}  // namespace Workbench
