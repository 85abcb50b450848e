// SPDX-License-Identifier: Apache-2.0
// Time stamps of scene descriptions.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// UTC as time since 1970-01-01T00:00:00Z without leap seconds.
using UtcTime = std::chrono::nanoseconds;

/// Reads an xs:dateTime. Without an offset it is UTC, as ONVIF has it; months, days and hours of
/// one digit are accepted, because ONVIF's own examples have them. A leap second is the first one
/// of the next minute. Digits beyond the nanosecond are cut off.
///
/// @param text "2026-05-01T12:00:00.25Z", "2026-05-01T14:00:00+02:00"
/// @return the time; nothing when the text is none, or one before 1970 or after 2200
std::optional<UtcTime> parseUtcTime(std::string_view text);

/// @param time UTC, from 1970 on
/// @return "2026-05-01T12:00:00.250000Z", cut off to microseconds
std::string utcText(UtcTime time);

}  // namespace Veskar::Live
