// SPDX-License-Identifier: Apache-2.0
#include "check/Rules.h"

#include <veskar/NearestWord.h>

#include <algorithm>
#include <set>

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
        keys.emplace_back(rule.key);
    }
    const std::string nearest = Veskar::nearestWord(key, keys);
    return nearest.empty() ? "" : fmt::format("; is {} meant?", nearest);
}

class MemberCheck {
public:
    MemberCheck(const Rule& rule, std::string path, Findings& findings)
        : rule_(rule), path_(std::move(path)), findings_(findings) {}

    void missing(int line) const {
        if (rule_.required) {
            findings_.push_back({Severity::Fault, static_cast<std::uint64_t>(line), path_, "",
                                 fmt::format("missing; expected {}", expectation(rule_.wanted))});
        }
    }

    void value(const LocatedValue& value) const {
        if (!hasType(value, rule_.wanted)) {
            add(Severity::Fault, value, fmt::format("expected {}", expectation(rule_.wanted)));
        } else if (isNumeric(rule_.wanted)) {
            number(value, path_, rule_.wanted);
        } else if (rule_.elements > 0) {
            array(value);
        }
    }

private:
    void number(const LocatedValue& value, const std::string& place, Wanted wanted) const {
        if (!rule_.allowed.contains(value.number)) {
            add(Severity::Fault, value, fmt::format("expected {}", expectation(wanted)), place);
        } else if (!rule_.usual.contains(value.number)) {
            add(Severity::Warning, value,
                fmt::format("unusual for {}; usual is {}", rule_.meaning, rule_.usual.inWords()),
                place);
        }
    }

    void array(const LocatedValue& value) const {
        if (value.elements.size() != rule_.elements) {
            add(Severity::Fault, value,
                fmt::format("expected {} numbers: {}", rule_.elements, rule_.meaning));
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
        const std::string limits = rule_.allowed.inWords();
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
        const bool isKnown = std::any_of(rules.begin(), rules.end(),
                                         [&k = key](const Rule& rule) { return rule.key == k; });
        if (!isKnown) {
            findings.push_back({unknown, line, joinPath(path, key), value.shown(),
                                "the key is not known" + suggestion(key, rules)});
        }
    }
}

}  // namespace

bool Range::contains(double value) const {
    const bool isAbove = leastIncluded ? value >= least : value > least;
    const bool isBelow = mostIncluded ? value <= most : value < most;
    return isAbove && isBelow;
}

std::string Range::inWords() const {
    const bool hasLeast = least > -std::numeric_limits<double>::infinity();
    const bool hasMost = most < std::numeric_limits<double>::infinity();
    if (hasLeast && hasMost && leastIncluded && mostIncluded) {
        return fmt::format("between {} and {}", least, most);
    }
    std::string words;
    if (hasLeast) {
        words = fmt::format("{} {}", leastIncluded ? "at least" : "above", least);
    }
    if (hasMost) {
        words += fmt::format("{}{} {}", hasLeast ? " and " : "", mostIncluded ? "at most" : "below",
                             most);
    }
    return words;
}

void checkMembers(const LocatedValue& object, const std::string& path, const Rules& rules,
                  Severity unknown, Findings& findings) {
    if (object.kind != Kind::Object) {
        findings.push_back({Severity::Fault, static_cast<std::uint64_t>(object.line), path,
                            object.shown(), "expected an object"});
        return;
    }
    for (const Rule& rule : rules) {
        const MemberCheck check(rule, joinPath(path, rule.key), findings);
        if (const LocatedValue* value = object.find(rule.key)) {
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
