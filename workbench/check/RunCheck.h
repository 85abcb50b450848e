// SPDX-License-Identifier: Apache-2.0
// Checks what `veskar run` is told.
#pragma once

#include "check/Finding.h"
#include "check/LocatedJson.h"

#include <string>

namespace Workbench {

/// Lets the reader of run.json read it, which stops at the first fault. What it accepts is checked
/// for what `veskar run` would find out later on this machine: a configuration of the fusion that
/// it cannot use, files of the brokers, addresses to listen at; and for what has no effect.
/// @param text of run.json
/// @param document the same document
/// @param findings receives what is found, with the lines
void checkRun(const std::string& text, const LocatedValue& document, Findings& findings);

}  // namespace Workbench
