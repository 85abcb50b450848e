// SPDX-License-Identifier: Apache-2.0
// A picture of the camera.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// A file of a picture, as browsers show it.
struct Picture {
    /// Larger ones are refused: a viewer over a slow network would wait for nothing else.
    static constexpr std::size_t mostBytes = std::size_t{8} << 20;

    std::string bytes;
    double time = 0.0;  ///< when it was taken, s, on the steady clock as frames are
};

/// @param bytes of a file
/// @return its media type by its first bytes, JPEG or PNG; null: it is no such picture
const char* mediaTypeOf(std::string_view bytes);

/// @param time of the system's clock
/// @return the same instant on the steady clock, s
double steadyTimeOf(std::chrono::system_clock::time_point time);

}  // namespace Veskar::Live
