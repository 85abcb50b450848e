// SPDX-License-Identifier: Apache-2.0
#include "check/Rules.h"

#include <veskar/NearestWord.h>

#include <algorithm>
#include <set>
#include <stdexcept>

#include <fmt/format.h>

namespace Workbench {
namespace {

using Kind = LocatedValue::Kind;

const char* nameOf(Wanted wanted) {
    switch (wanted) {
        case Wanted::Real:
            return "a number with a decimal point";
        case Wanted::Integer:
            return "an integer";
        case Wanted::Number:
            return "a number";
        case Wanted::Boolean:
            return "true or false";
        case Wanted::Text:
            return "a string";
        case Wanted::Object:
            return "an object";
        default:
            return "an array";
    }
}

bool hasType(const LocatedValue& value, Wanted wanted) {
    switch (wanted) {
        case Wanted::Real:
            return value.kind == Kind::Real;
        case Wanted::Integer:
            return value.kind == Kind::Integer;
        case Wanted::Number:
            return value.isNumber();
        case Wanted::Boolean:
            return value.kind == Kind::Boolean;
        case Wanted::Text:
            return value.kind == Kind::Text;
        case Wanted::Object:
            return value.kind == Kind::Object;
        default:
            return value.kind == Kind::Array;
    }
}

bool isNumeric(Wanted wanted) {
    return wanted == Wanted::Real || wanted == Wanted::Integer || wanted == Wanted::Number;
}

std::string suggestion(const std::string& key, const Rules& rules) {
    std::vector<std::string> keys;
    keys.reserve(rules.size());
    for (const Rule& rule : rules) {
        keys.emplace_back(rule.key.name);
    }
    const std::string nearest = Veskar::nearestWord(key, keys);
    return nearest.empty() ? "" : fmt::format("; is {} meant?", nearest);
}

class MemberCheck {
public:
    MemberCheck(const Rule& rule, std::string path, Findings& findings)
        : rule_(rule), path_(std::move(path)), findings_(findings) {}

    void missing(int line) const {
        if (rule_.key.required) {
            findings_.push_back(
                {Severity::Fault, static_cast<std::uint64_t>(line), path_, "",
                 fmt::format("missing; expected {}", expectation(rule_.key.wanted))});
        }
    }

    void value(const LocatedValue& value) const {
        if (!hasType(value, rule_.key.wanted)) {
            add(Severity::Fault, value, fmt::format("expected {}", expectation(rule_.key.wanted)));
        } else if (isNumeric(rule_.key.wanted)) {
            number(value, path_, rule_.key.wanted);
        } else if (rule_.key.count > 0) {
            array(value);
        }
    }

private:
    void number(const LocatedValue& value, const std::string& place, Wanted wanted) const {
        if (!rule_.key.allowed.contains(value.number)) {
            add(Severity::Fault, value, fmt::format("expected {}", expectation(wanted)), place);
        } else if (!rule_.usual.contains(value.number)) {
            add(Severity::Warning, value,
                fmt::format("unusual for {}; usual is {}", rule_.meaning, inWords(rule_.usual)),
                place);
        }
    }

    void array(const LocatedValue& value) const {
        if (value.elements.size() != rule_.key.count) {
            add(Severity::Fault, value,
                fmt::format("expected {} numbers: {}", rule_.key.count, rule_.meaning));
            return;
        }
        for (std::size_t i = 0; i < value.elements.size(); ++i) {
            const LocatedValue& element = value.elements[i];
            const std::string place = fmt::format("{}[{}]", path_, i);
            if (!hasType(element, rule_.element)) {
                add(Severity::Fault, element, fmt::format("expected {}", nameOf(rule_.element)),
                    place);
            } else {
                number(element, place, rule_.element);
            }
        }
    }

    std::string expectation(Wanted wanted) const {
        const std::string limits = inWords(rule_.key.allowed);
        return fmt::format("{}{}{}: {}", nameOf(wanted), limits.empty() ? "" : " ", limits,
                           rule_.meaning);
    }

    void add(Severity severity, const LocatedValue& value, std::string message) const {
        add(severity, value, std::move(message), path_);
    }
    void add(Severity severity, const LocatedValue& value, std::string message,
             const std::string& place) const {
        findings_.push_back({severity, static_cast<std::uint64_t>(value.line), place, value.shown(),
                             std::move(message)});
    }

    const Rule& rule_;
    std::string path_;
    Findings& findings_;
};

void checkKeys(const LocatedValue& object, const std::string& path, const Rules& rules,
               Severity unknown, Findings& findings) {
    std::set<std::string_view> seen;
    for (const auto& [key, value] : object.members) {
        const auto line = static_cast<std::uint64_t>(value.line);
        if (!seen.insert(key).second) {
            findings.push_back({Severity::Fault, line, joinPath(path, key), value.shown(),
                                "the key stands here a second time; only the last one counts"});
        }
        const bool isKnown = std::any_of(rules.begin(), rules.end(), [&k = key](const Rule& rule) {
            return rule.key.name == k;
        });
        if (!isKnown) {
            findings.push_back({unknown, line, joinPath(path, key), value.shown(),
                                "the key is not known" + suggestion(key, rules)});
        }
    }
}

}  // namespace

std::string inWords(const Range& range) {
    const bool isPositive = range.leastIncluded && range.least == leastPositive;
    const bool isOpen = isPositive || !range.leastIncluded;
    const double least = isPositive ? 0.0 : range.least;
    const bool hasLeast = range.least > -unlimited;
    const bool hasMost = range.most < unlimited;
    if (hasLeast && hasMost && !isOpen && range.mostIncluded) {
        return fmt::format("between {} and {}", least, range.most);
    }
    std::string words;
    if (hasLeast) {
        words = fmt::format("{} {}", isOpen ? "above" : "at least", least);
    }
    if (hasMost) {
        words += fmt::format("{}{} {}", hasLeast ? " and " : "",
                             range.mostIncluded ? "at most" : "below", range.most);
    }
    return words;
}

Rules rulesOf(const Keys& keys, const std::vector<Note>& notes) {
    for (const Note& note : notes) {
        static_cast<void>(keys[note.key]);
    }
    Rules rules;
    for (const Key& key : keys) {
        const auto note = std::find_if(notes.begin(), notes.end(),
                                       [&key](const Note& n) { return n.key == key.name; });
        if (note == notes.end()) {
            throw std::logic_error("no meaning of the key " + std::string(key.name));
        }
        rules.push_back({key, note->meaning, note->usual});
        rules.back().key.allowed = note->possible.value_or(key.allowed);
    }
    return rules;
}

void checkMembers(const LocatedValue& object, const std::string& path, const Rules& rules,
                  Severity unknown, Findings& findings) {
    if (object.kind != Kind::Object) {
        findings.push_back({Severity::Fault, static_cast<std::uint64_t>(object.line), path,
                            object.shown(), "expected an object"});
        return;
    }
    for (const Rule& rule : rules) {
        const MemberCheck check(rule, joinPath(path, rule.key.name), findings);
        if (const LocatedValue* value = object.find(rule.key.name)) {
            check.value(*value);
        } else {
            check.missing(object.line);
        }
    }
    checkKeys(object, path, rules, unknown, findings);
}

void checkNumber(const LocatedValue& value, const std::string& path, const Rule& rule,
                 Findings& findings) {
    MemberCheck(rule, path, findings).value(value);
}

std::string joinPath(const std::string& path, std::string_view key) {
    return path.empty() ? std::string(key) : fmt::format("{}.{}", path, key);
}

const LocatedValue* numberAt(const LocatedValue& object, std::string_view key) {
    const LocatedValue* value = object.find(key);
    return value != nullptr && value->isNumber() ? value : nullptr;
}

const LocatedValue* objectAt(const LocatedValue& object, std::string_view key) {
    const LocatedValue* value = object.find(key);
    return value != nullptr && value->kind == LocatedValue::Kind::Object ? value : nullptr;
}

}  // namespace Workbench
