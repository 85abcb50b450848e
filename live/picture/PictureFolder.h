// SPDX-License-Identifier: Apache-2.0
// Pictures that another program puts into a directory.
#pragma once

#include "live/picture/PictureSource.h"

#include <string>

#include <sys/stat.h>

namespace Veskar::Live {

/// The newest picture of a directory by the time of its last change, of two by name. Only regular
/// files named *.jpg, *.jpeg or *.png and not hidden: links could lead to any file.
class PictureFolder : public PictureSource {
public:
    /// @param path of the directory, which may be missing until it is made
    explicit PictureFolder(std::string path) : path_(std::move(path)) {}

    std::optional<Picture> next(const std::atomic<bool>& isEnding) override;

private:
    /// What tells one state of a file from another.
    struct Version {
        std::string name;
        timespec changed{};
        off_t size = 0;
    };

    std::string path_;
    Version shown_;
};

}  // namespace Veskar::Live
