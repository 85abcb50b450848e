// SPDX-License-Identifier: Apache-2.0
// The error of a file that the system does not let us open, read or write.
#pragma once

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <cstring>
#include <string>

namespace Workbench {

/// An InputError that knows the system's error number.
class FileError : public InputError {
public:
    /// @param file its name for users
    /// @param number errno
    /// @param doing what failed, as "cannot write: "
    FileError(const std::string& file, int number, const std::string& doing = {})
        : InputError(file, InputError(doing + std::strerror(number))), number_(number) {}

    /// @return errno of the failed call
    int number() const { return number_; }

private:
    int number_;
};

}  // namespace Workbench
