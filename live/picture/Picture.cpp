// SPDX-License-Identifier: Apache-2.0
#include "live/picture/Picture.h"

namespace Veskar::Live {

const char* mediaTypeOf(std::string_view bytes) {
    const auto begins = [bytes](std::string_view mark) {
        return bytes.substr(0, mark.size()) == mark;
    };
    return begins("\xff\xd8\xff")        ? "image/jpeg"
           : begins("\x89PNG\r\n\x1a\n") ? "image/png"
                                         : nullptr;
}

double steadyTimeOf(std::chrono::system_clock::time_point time) {
    using Seconds = std::chrono::duration<double>;
    const Seconds age = std::chrono::system_clock::now() - time;
    return (Seconds(std::chrono::steady_clock::now().time_since_epoch()) - age).count();
}

}  // namespace Veskar::Live
