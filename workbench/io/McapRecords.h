// SPDX-License-Identifier: Apache-2.0
// What writer and reader of the container format MCAP share (https://mcap.dev, version 0).
#pragma once

#include <cstdint>
#include <string_view>

namespace Workbench {

/// A file begins and ends with it.
constexpr std::string_view mcapMagic = "\x89MCAP0\r\n";

/// The first byte of a record.
enum class McapRecord : std::uint8_t {
    Header = 0x01,
    Footer = 0x02,
    Schema = 0x03,
    Channel = 0x04,
    Message = 0x05,
    Chunk = 0x06,
    MessageIndex = 0x07,
    ChunkIndex = 0x08,
    Statistics = 0x0b,
    SummaryOffset = 0x0e,
    DataEnd = 0x0f
};

}  // namespace Workbench
