// SPDX-License-Identifier: Apache-2.0
#include "gating/ClassTraits.h"

#include <veskar/Vocabulary.h>

#include "track/ClassLabel.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace Veskar {
namespace {

using Groups = std::set<std::string>;

/// The classes by the length of their names: few share one, and comparing is quicker than hashing.
class Table {
public:
    Table();
    const ClassTraits* find(const std::string& name) const;

private:
    struct Entry {
        std::string name;
        ClassTraits traits;
    };
    using Entries = std::vector<Entry>;

    ClassTraits& at(const std::string& name);

    std::vector<Entries> byLength_;
};

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

Table::Table() {
    for (const std::string& name : Vocabulary::supportedClasses) {
        at(name).supported = true;
    }
    for (const auto& [name, group] : Vocabulary::classGroups) {
        const auto position = std::distance(groups().begin(), groups().find(group));
        at(name).group = static_cast<int>(position);
    }
}

ClassTraits& Table::at(const std::string& name) {
    byLength_.resize(std::max(byLength_.size(), name.size() + 1));
    Entries& entries = byLength_[name.size()];
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [&name](const Entry& known) { return known.name == name; });
    if (entry != entries.end()) {
        return entry->traits;
    }
    entries.push_back({name, {}});
    return entries.back().traits;
}

const ClassTraits* Table::find(const std::string& name) const {
    if (name.size() < byLength_.size()) {
        for (const Entry& entry : byLength_[name.size()]) {
            if (std::memcmp(entry.name.data(), name.data(), name.size()) == 0) {
                return &entry.traits;
            }
        }
    }
    return nullptr;
}

}  // namespace

std::size_t ClassTraits::groupCount() {
    return groups().size();
}

ClassTraits classTraitsOf(const Track& track) {
    static const Table table;
    const ClassTraits* traits = table.find(ClassLabel(track).text());
    return traits == nullptr ? ClassTraits() : *traits;
}

}  // namespace Veskar
