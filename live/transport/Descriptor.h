// SPDX-License-Identifier: Apache-2.0
// Descriptors that the loop may use without waiting.
#pragma once

#include "src/net/FileDescriptor.h"

#include <string>

namespace Veskar::Live {

/// A descriptor of its own on what another one is open on, such as standard output, that does not
/// wait. Whether reads and writes wait is a property of what is open and shared with other
/// programs, a shell for example: pipes and terminals are therefore opened once more, where the
/// system allows it. Regular files do not wait and stay as they are.
///
/// @param descriptor an open one
/// @param access O_RDONLY or O_WRONLY
/// @throw std::system_error
FileDescriptor withoutWaiting(int descriptor, int access);

/// @param errorNumber as in errno
/// @return its text
std::string textOf(int errorNumber);

}  // namespace Veskar::Live
