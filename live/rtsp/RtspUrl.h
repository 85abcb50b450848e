// SPDX-License-Identifier: Apache-2.0
// Addresses of RTSP servers.
#pragma once

#include <string>

namespace Veskar::Live {

/// @param url such as "rtsp://camera:554/stream?profile=1"
/// @return why the text is no such address; empty when it is one. A password that stands in it is
///         not repeated.
std::string faultOfRtspUrl(const std::string& url);

}  // namespace Veskar::Live
