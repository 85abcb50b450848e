// SPDX-License-Identifier: Apache-2.0
// Checks a document of any kind that the program reads.
#pragma once

#include "check/Finding.h"

#include <string>

namespace Workbench {

/// Kinds of documents.
enum class DocumentKind { Configuration, Camera, Scenario, Run, Recording };

/// @param path a file
/// @return the kind that its contents suggest; a configuration when undecided
/// @throw InputError when it cannot be read
DocumentKind kindOfDocument(const std::string& path);

/// Checks a configuration, a camera, a scenario or what `veskar run` is told: each member, and
/// finally by the reader that uses the document, so that nothing passes here that is rejected
/// there.
///
/// @param path the file, or "-"
/// @param kind its kind, not Recording
/// @return all faults and suspicious values, ordered by line
/// @throw InputError when it cannot be read
Findings checkDocument(const std::string& path, DocumentKind kind);

}  // namespace Workbench
