// SPDX-License-Identifier: Apache-2.0
#include "support/InputFile.h"

#include "support/Require.h"

#include <sys/mman.h>
#include <unistd.h>

namespace VeskarFuzz {

InputFile::InputFile(std::string_view text)
    : descriptor_(::memfd_create("fuzz", MFD_CLOEXEC)),
      name_("/proc/self/fd/" + std::to_string(descriptor_)) {
    require(descriptor_ >= 0, "a file in memory can be made");
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        require(count > 0, "a file in memory can be written");
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

InputFile::~InputFile() {
    ::close(descriptor_);
}

}  // namespace VeskarFuzz
