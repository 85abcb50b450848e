// SPDX-License-Identifier: Apache-2.0
// Classes in the words of other programs.
#pragma once

#include <veskar-host/Labels.h>

#include "HostLibrary.h"

#include <set>
#include <string>
#include <vector>

namespace Workbench {

/// Translates words for classes; what means nothing becomes a warning, once per word.
class ImportedClasses {
public:
    /// @param warnings receives them; must outlive this
    explicit ImportedClasses(std::vector<std::string>& warnings) : warnings_(warnings) {}

    /// @param word of another program; may be empty
    /// @return the class with certainty, or an unknown one
    Label of(const std::string& word);

private:
    std::vector<std::string>& warnings_;
    std::set<std::string> unknown_;
};

}  // namespace Workbench
