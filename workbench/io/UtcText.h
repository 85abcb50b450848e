// SPDX-License-Identifier: Apache-2.0
// Times as people and other programs write them.
#pragma once

#include <string>

namespace Workbench {

/// @param unixTime UNIX time, s
/// @return "2026-05-01T12:00:00.250000Z" (RFC 3339), rounded to microseconds; empty before 1970 and
///         after 9999, which the format cannot state
std::string utcText(double unixTime);

}  // namespace Workbench
