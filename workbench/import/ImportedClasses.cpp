// SPDX-License-Identifier: Apache-2.0
#include "import/ImportedClasses.h"

#include "io/Printable.h"
#include "recording/LabelWords.h"

#include <fmt/format.h>

namespace Workbench {

Label ImportedClasses::of(const std::string& word) {
    if (word.empty()) {
        return {};
    }
    const auto meant = meantWord(WordKind::Class, word);
    if (!meant && unknown_.insert(word).second) {
        warnings_.push_back(fmt::format("class \"{}\" is {}; imported as \"unknown\"",
                                        printable(word),
                                        adviceOn(WordKind::Class, word).value_or("")));
    }
    return meant && *meant != "unknown" ? Label{*meant, 1.0} : Label{};
}

}  // namespace Workbench
