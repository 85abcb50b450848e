// SPDX-License-Identifier: Apache-2.0
// Tells the journal how much a line matters.
#pragma once

#include <string>

namespace Workbench {

/// @param descriptor an open one, such as standard error
/// @return whether the systemd journal reads it (JOURNAL_STREAM in systemd.exec(5))
bool isReadByJournal(int descriptor);

/// @param priority as syslog() takes it
/// @return what a line of standard error begins with for the journal to know its priority
///         (sd-daemon(3)); nothing where people read it
std::string journalPrefix(int priority);

}  // namespace Workbench
