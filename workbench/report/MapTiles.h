// SPDX-License-Identifier: Apache-2.0
// The map under the plan of a report.
#pragma once

#include <string>

namespace Workbench {

/// Pictures of a map in Web Mercator (EPSG:3857), 256 pixels wide, which the browser fetches.
struct MapTiles {
    std::string url;          ///< template with {z}, {x} and {y}; empty: no map
    std::string attribution;  ///< whose map it is, shown in the plan
};

/// @param url template
/// @return scheme, host and port, to which the page's content security policy admits requests
/// @throw InputError what is wrong with the template
std::string originOf(const std::string& url);

}  // namespace Workbench
