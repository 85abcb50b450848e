// SPDX-License-Identifier: Apache-2.0
// What is wrong with an input, in words for the person who wrote it.
#pragma once

#include <stdexcept>

namespace Workbench {

/// Bad input or an output that cannot be written. The program prints the text and exits with 2.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Workbench
