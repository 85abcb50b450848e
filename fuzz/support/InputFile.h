// SPDX-License-Identifier: Apache-2.0
// Bytes of the fuzzer as a file with a path.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace VeskarFuzz {

/// A file in memory during the lifetime of this object.
class InputFile {
public:
    explicit InputFile(std::string_view text);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    /// @return a path by which this process can open it, any number of times
    const std::string& path() const { return name_; }

private:
    int descriptor_;
    std::string name_;
};

/// @param data bytes
/// @param size number of bytes
/// @return the bytes as text
inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

}  // namespace VeskarFuzz
