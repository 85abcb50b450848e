// SPDX-License-Identifier: Apache-2.0
#include "live/service/StatusReport.h"

#include "host/json/LineText.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace Veskar::Live {
namespace {

using Host::Internal::LineText;

constexpr int decimals = 6;
constexpr std::string_view leftOut = "leftOut";

/// @return "frames_taken" for "framesTaken"
std::string inSnakeCase(std::string_view name) {
    std::string snake;
    for (const char letter : name) {
        if (std::isupper(static_cast<unsigned char>(letter)) != 0) {
            snake += '_';
        }
        snake += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return snake;
}

/// @return the value of a label as Prometheus quotes it
std::string inQuotes(std::string_view text) {
    std::string result = "\"";
    for (const char letter : text) {
        if (letter == '\n') {
            result += "\\n";
            continue;
        }
        if (letter == '"' || letter == '\\') {
            result += '\\';
        }
        result += letter;
    }
    return result + '"';
}

std::string endOf(StatusReport::Unit unit) {
    switch (unit) {
        case StatusReport::Unit::Seconds:
            return "_seconds";
        case StatusReport::Unit::Bytes:
            return "_bytes";
        case StatusReport::Unit::One:
            break;
    }
    return "";
}

}  // namespace

/// By the conventions of Prometheus: in snake case, with the unit, and with "_total" for counters.
std::string StatusReport::metricOf(const Number& number) {
    if (number.group == leftOut) {
        return "veskar_left_out_total";
    }
    std::string name =
        "veskar_" + (number.group.empty() ? "" : number.group + "_") + inSnakeCase(number.name);
    const std::string unit = endOf(number.unit);
    const bool saysUnit = name.size() > unit.size() &&
                          name.compare(name.size() - unit.size(), unit.size(), unit) == 0;
    return name + (saysUnit ? "" : unit) + (number.kind == Kind::Counter ? "_total" : "");
}

void StatusReport::add(std::string_view group, std::string_view instance, std::string_view name,
                       double value, Kind kind, Unit unit) {
    numbers_.push_back(
        {std::string(group), std::string(instance), std::string(name), value, kind, unit});
}

void StatusReport::addLeftOut(std::string_view sensor, std::string_view term, double count) {
    add(leftOut, sensor, term, count, Kind::Counter);
}

std::string StatusReport::toJson() const {
    LineText text;
    text += '{';
    std::string group;
    std::string instance;
    bool isFirst = true;
    const auto close = [&] { text += group.empty() ? "" : "}}"; };
    for (const Number& number : numbers_) {
        if (number.group != group) {
            close();
            text += isFirst ? "" : ",";
            text.addQuoted(number.group);
            text += ":{";
            text.addQuoted(number.instance);
            text += ":{";
            isFirst = true;
        } else if (number.instance != instance) {
            text += "},";
            text.addQuoted(number.instance);
            text += ":{";
            isFirst = true;
        }
        group = number.group;
        instance = number.instance;
        text += isFirst ? "" : ",";
        isFirst = false;
        text.addQuoted(number.name);
        text += ':';
        text.addNumber(number.value, decimals);
    }
    close();
    text += '}';
    return text.string();
}

std::string StatusReport::toPrometheus() const {
    // All numbers of one name have to stand together.
    std::string text;
    std::set<std::string> told;
    for (const Number& first : numbers_) {
        const std::string name = metricOf(first);
        if (!told.insert(name).second) {
            continue;
        }
        text += "# TYPE " + name + (first.kind == Kind::Counter ? " counter\n" : " gauge\n");
        for (const Number& number : numbers_) {
            if (metricOf(number) != name) {
                continue;
            }
            text += name;
            if (number.group == leftOut) {
                text +=
                    "{sensor=" + inQuotes(number.instance) + ",term=" + inQuotes(number.name) + "}";
            } else if (!number.group.empty()) {
                text += "{" + number.group + "=" + inQuotes(number.instance) + "}";
            }
            text += " " + Host::Internal::shortestText(number.value) + "\n";
        }
    }
    return text;
}

}  // namespace Veskar::Live
