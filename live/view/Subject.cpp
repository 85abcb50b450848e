// SPDX-License-Identifier: Apache-2.0
#include "live/view/Subject.h"

#include <charconv>

namespace Veskar::Live {

std::optional<Subject> Subject::parse(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view kind = text.substr(0, colon);
    Subject subject;
    if (kind == "video") {
        subject.sensor = VideoObject;
    } else if (kind == "radar") {
        subject.sensor = Radar;
    } else if (kind != "system") {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(colon + 1);
    const auto [end, fault] =
        std::from_chars(digits.data(), digits.data() + digits.size(), subject.id);
    return fault == std::errc() && end == digits.data() + digits.size() ? std::optional(subject)
                                                                        : std::nullopt;
}

}  // namespace Veskar::Live
