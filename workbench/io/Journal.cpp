// SPDX-License-Identifier: Apache-2.0
#include "io/Journal.h"

#include <cstdlib>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {

bool isReadByJournal(int descriptor) {
    const char* journal = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return journal != nullptr && ::fstat(descriptor, &status) == 0 &&
           journal == fmt::format("{}:{}", status.st_dev, status.st_ino);
}

std::string journalPrefix(int priority) {
    return isReadByJournal(STDERR_FILENO) ? fmt::format("<{}>", priority) : "";
}

}  // namespace Workbench
