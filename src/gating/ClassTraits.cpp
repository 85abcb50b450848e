// SPDX-License-Identifier: Apache-2.0
#include "gating/ClassTraits.h"

#include <veskar/Vocabulary.h>

#include "track/ClassLabel.h"

#include <iterator>
#include <set>
#include <string>
#include <unordered_map>

namespace Veskar {
namespace {

using Groups = std::set<std::string>;
using Table = std::unordered_map<std::string, ClassTraits>;

const Groups& groups() {
    static const Groups all = [] {
        Groups names;
        for (const auto& [name, group] : Vocabulary::classGroups) {
            names.insert(group);
        }
        return names;
    }();
    return all;
}

Table makeTable() {
    Table table;
    for (const std::string& name : Vocabulary::supportedClasses) {
        table[name].supported = true;
    }
    for (const auto& [name, group] : Vocabulary::classGroups) {
        const auto position = std::distance(groups().begin(), groups().find(group));
        table[name].group = static_cast<int>(position);
    }
    return table;
}

}  // namespace

std::size_t ClassTraits::groupCount() {
    return groups().size();
}

ClassTraits classTraitsOf(const Track& track) {
    static const Table table = makeTable();
    const auto entry = table.find(ClassLabel(track).text());
    return entry == table.end() ? ClassTraits() : entry->second;
}

}  // namespace Veskar
