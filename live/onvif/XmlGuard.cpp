// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/XmlGuard.h"

#include <veskar-host/InputError.h>

#include <algorithm>
#include <array>
#include <string>

#include <simdjson.h>

namespace Veskar::Live {
namespace {

using Host::InputError;

bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// Number of characters of a reference's text that are looked at: that of "&quot;".
constexpr std::size_t longestEntity = 6;

void refuseEntity(std::string_view reference) {
    constexpr std::array<std::string_view, 6> harmless{"&amp;",  "&lt;",   "&gt;",
                                                       "&quot;", "&apos;", "&#"};
    const bool isHarmless =
        std::any_of(harmless.begin(), harmless.end(),
                    [&](std::string_view entity) { return startsWith(reference, entity); });
    if (!isHarmless) {
        throw InputError("references to entities are not accepted");
    }
}

/// The number of characters of markup whose contents are plain text, with its end; 0: none begins
/// here.
std::size_t plainLength(std::string_view markup) {
    constexpr std::array<std::array<std::string_view, 2>, 2> plain{
        {{"<!--", "-->"}, {"<![CDATA[", "]]>"}}};
    for (const auto& [beginning, end] : plain) {
        if (startsWith(markup, beginning)) {
            const std::size_t place = markup.find(end, beginning.size());
            return place == std::string_view::npos ? markup.size() : place + end.size();
        }
    }
    if (startsWith(markup, "<!")) {
        throw InputError("document type declarations are not accepted");
    }
    return 0;
}

}  // namespace

void refuseHostileXml(std::string_view text, const TextLimits& limits) {
    if (text.size() > limits.bytes) {
        throw InputError("larger than " + std::to_string(limits.bytes) + " bytes");
    }
    if (!simdjson::validate_utf8(text.data(), text.size())) {
        throw InputError("is not UTF-8");
    }
    std::size_t elements = 0;
    for (std::size_t i = text.find_first_of("<&="); i < text.size();
         i = text.find_first_of("<&=", i)) {
        std::size_t length = 1;
        if (text[i] == '&') {
            refuseEntity(text.substr(i, longestEntity));
        } else {
            const std::size_t plain = text[i] == '<' ? plainLength(text.substr(i)) : 0;
            const bool isCounted = plain == 0 && text.substr(i, 2) != "</";
            elements += isCounted ? 1 : 0;
            length = std::max(plain, length);
        }
        i += length;
    }
    if (elements > limits.elements) {
        throw InputError("more than " + std::to_string(limits.elements) +
                         " elements and attributes");
    }
}

}  // namespace Veskar::Live
