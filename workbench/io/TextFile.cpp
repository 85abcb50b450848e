// SPDX-License-Identifier: Apache-2.0
#include "io/TextFile.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/LineReader.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using Event = nlohmann::json::parse_event_t;

enum class RepeatedKeys { LastCounts, Refused };

/// Rejects repeated keys and deep nesting while parsing.
class Watch {
public:
    explicit Watch(RepeatedKeys repeatedKeys) : repeatedKeys_(repeatedKeys) {}

    /// Callback of nlohmann::json::parse; a key has a depth one above that of its object.
    bool operator()(int depth, Event event, const nlohmann::json& value) {
        const auto level = static_cast<std::size_t>(depth);
        if (event == Event::object_start || event == Event::array_start) {
            if (level >= deepestNesting) {
                throw InputError(fmt::format("nested more than {} levels deep", deepestNesting));
            }
            open_.resize(level);
            open_.emplace_back();
        } else if (event == Event::key && repeatedKeys_ == RepeatedKeys::Refused) {
            add(level - 1, value.get_ref<const std::string&>());
        }
        return true;
    }

private:
    struct Level {
        std::string key;  ///< the last key
        std::set<std::string> keys;
    };

    void add(std::size_t level, const std::string& key) {
        open_[level].key = key;
        if (!open_[level].keys.insert(key).second) {
            std::string path;
            for (std::size_t i = 0; i <= level; ++i) {
                path += path.empty() || open_[i].key.empty() ? "" : ".";
                path += open_[i].key;
            }
            throw InputError(path, "occurs twice");
        }
    }

    RepeatedKeys repeatedKeys_;
    std::vector<Level> open_;
};

}  // namespace

std::string readText(const std::string& path) {
    LineReader lines(path);
    std::string text;
    std::string_view line;
    while (lines.next(line)) {
        text += line;
        text += '\n';
        if (text.size() > LineReader::maximumLineLength) {
            throw InputError(lines.name(),
                             InputError(fmt::format("is longer than {} MiB",
                                                    LineReader::maximumLineLength >> 20)));
        }
    }
    return text;
}

nlohmann::json parseJson(const std::string& text, const std::string& name) {
    try {
        return nlohmann::json::parse(text, Watch(RepeatedKeys::LastCounts), true, true);
    } catch (const nlohmann::json::parse_error& error) {
        const auto end =
            text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
        const auto line = std::count(text.begin(), end, '\n') + 1;
        throw InputError(fmt::format("{}:{}", name, line), InputError(reasonOf(error)));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(name, InputError(reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(name, error);
    }
}

nlohmann::json parseJsonLine(std::string_view line) {
    return nlohmann::json::parse(line, Watch(RepeatedKeys::Refused));
}

nlohmann::json readJson(const std::string& path) {
    return parseJson(readText(path), path == "-" ? "<stdin>" : path);
}

std::string reasonOf(const std::exception& error) {
    std::string_view text = error.what();
    // "[json.exception.parse_error.101] parse error at line 1, column 5: syntax error ..."
    const std::size_t bracket = text.find("] ");
    if (bracket != std::string_view::npos) {
        text.remove_prefix(bracket + 2);
    }
    const std::size_t place = text.find("parse error at line");
    const std::size_t column = text.find("column ");
    if (place == 0 && column != std::string_view::npos) {
        text.remove_prefix(column);
    }
    // The text may contain any bytes of the input; a terminal should not interpret them.
    std::string plain(text);
    std::replace_if(
        plain.begin(), plain.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return plain;
}

}  // namespace Workbench
