// SPDX-License-Identifier: Apache-2.0
#include "config/WrittenJson.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include <jansson.h>

namespace Veskar {
namespace {

using Document = std::unique_ptr<json_t, decltype(&json_decref)>;

Document load(std::string_view json, std::size_t flags, json_error_t& error) {
    return {json_loadb(json.data(), json.size(), flags, &error), &json_decref};
}

std::string reasonOf(const json_error_t& error) {
    const std::string reason = error.text;
    const std::string comment = "near '/'";
    const bool isComment =
        reason.size() >= comment.size() &&
        reason.compare(reason.size() - comment.size(), comment.size(), comment) == 0;
    return isComment ? "JSON has no comments: " + reason : reason;
}

/// Walks over a text that Jansson has accepted, so that its syntax needs no checks.
class Walk {
public:
    explicit Walk(std::string_view json) : rest_(json) {}

    /// @param depth objects around the value
    WrittenValue value(int depth = 0) {
        // Deeper than any setting stands; a text may go on for thousands of levels.
        constexpr int deepestMembers = 8;
        skipSpace();
        WrittenValue value;
        value.line = line_;
        switch (rest_.front()) {
            case '{':
                value.text = take(1);
                if (depth < deepestMembers) {
                    readMembers(value, depth + 1);
                } else {
                    skipToClosing();
                }
                break;
            case '[':
                value.text = take(1);
                skipToClosing();
                break;
            case '"':
                value.text = quoted();
                break;
            default:
                value.text = take(std::min(rest_.find_first_of(" \t\r\n,]}"), rest_.size()));
        }
        return value;
    }

private:
    void readMembers(WrittenValue& object, int depth) {
        while (!endsObject()) {
            const int lineOfKey = line_;
            std::string key = content(quoted());
            skipSpace();
            take(1);  // the colon
            object.members.push_back(value(depth));
            object.members.back().key = std::move(key);
            object.members.back().line = lineOfKey;
        }
    }

    /// Passes over what is left of an object or array, whatever is nested in it.
    void skipToClosing() {
        for (int open = 1; open > 0;) {
            skipSpace();
            const char next = rest_.front();
            if (next == '"') {
                quoted();
                continue;
            }
            if (next == '{' || next == '[') {
                ++open;
            } else if (next == '}' || next == ']') {
                --open;
            }
            take(1);
        }
    }

    /// Passes over the comma before the next member, or over what closes the object.
    bool endsObject() {
        skipSpace();
        if (rest_.front() == ',') {
            take(1);
            skipSpace();
        }
        const bool isEnd = rest_.front() == '}';
        if (isEnd) {
            take(1);
        }
        return isEnd;
    }

    std::string quoted() {
        std::size_t end = 1;
        while (rest_[end] != '"') {
            end += rest_[end] == '\\' ? 2 : 1;
        }
        return take(end + 1);
    }

    static std::string content(const std::string& quoted) {
        json_error_t error;
        return json_string_value(load(quoted, JSON_DECODE_ANY, error).get());
    }

    void skipSpace() {
        while (!rest_.empty() && std::string_view(" \t\r\n").find(rest_.front()) != rest_.npos) {
            line_ += rest_.front() == '\n' ? 1 : 0;
            take(1);
        }
    }

    std::string take(std::size_t count) {
        std::string taken(rest_.substr(0, count));
        rest_.remove_prefix(count);
        return taken;
    }

    std::string_view rest_;
    int line_ = 1;
};

}  // namespace

WrittenValue::Kind WrittenValue::kind() const {
    switch (text.front()) {
        case '{':
            return Kind::Object;
        case '[':
            return Kind::Array;
        case '"':
            return Kind::String;
        case 't':
        case 'f':
            return Kind::Boolean;
        case 'n':
            return Kind::Null;
        default:
            return text.find_first_of(".eE") == std::string::npos ? Kind::Integer : Kind::Real;
    }
}

const WrittenValue* WrittenValue::find(const std::string& name) const {
    const auto found = std::find_if(members.rbegin(), members.rend(),
                                    [&](const WrittenValue& m) { return m.key == name; });
    return found == members.rend() ? nullptr : &*found;
}

WrittenValue readWritten(const std::string& json) {
    json_error_t error;
    if (!load(json, 0, error)) {
        throw JsonSyntaxError(std::max(error.line, 1), reasonOf(error));
    }
    return Walk(json).value();
}

}  // namespace Veskar
