// SPDX-License-Identifier: Apache-2.0
// Checks a document of any kind that the program knows.
#pragma once

#include "check/Finding.h"

#include <string>

namespace Workbench {

/// What a document is.
enum class DocumentKind { Configuration, Camera, Scenario, Recording };

/// @param path a file
/// @return what its contents look like; a file that looks like nothing is a configuration
/// @throw InputError when it cannot be read
DocumentKind kindOfDocument(const std::string& path);

/// Checks a configuration, a camera or a scenario: member by member, and last by the reader that
/// will read it, so that nothing passes here that is refused there.
///
/// @param path the file, or "-"
/// @param kind what it is, not Recording
/// @return everything that is wrong or suspicious, in the order of the lines
/// @throw InputError when it cannot be read
Findings checkDocument(const std::string& path, DocumentKind kind);

}  // namespace Workbench
