// SPDX-License-Identifier: Apache-2.0
#include "live/picture/PictureFolder.h"

#include <veskar-host/InputError.h>

#include "live/transport/Descriptor.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <string_view>
#include <tuple>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

namespace Veskar::Live {
namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

bool isNamedAsPicture(std::string_view name) {
    constexpr std::array<std::string_view, 3> endings{".jpg", ".jpeg", ".png"};
    return name.front() != '.' &&
           std::any_of(endings.begin(), endings.end(), [name](std::string_view ending) {
               return name.size() > ending.size() &&
                      std::equal(ending.rbegin(), ending.rend(), name.rbegin(),
                                 [](char wanted, unsigned char found) {
                                     return wanted == std::tolower(found);
                                 });
           });
}

[[noreturn]] void refuse(int errorNumber) {
    throw Host::InputError("the directory of pictures cannot be read: " + textOf(errorNumber));
}

std::string contentsOf(int directory, const std::string& name, std::size_t size) {
    const FileDescriptor file(
        ::openat(directory, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file) {
        refuse(errno);
    }
    std::string contents(size, '\0');
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t count = ::read(file.get(), contents.data() + filled, size - filled);
        if (count < 0) {
            refuse(errno);
        }
        if (count == 0) {
            break;  // it was cut meanwhile
        }
        filled += static_cast<std::size_t>(count);
    }
    contents.resize(filled);
    return contents;
}

}  // namespace

std::optional<Picture> PictureFolder::next(const std::atomic<bool>& isEnding) {
    const Directory directory(::opendir(path_.c_str()));
    if (!directory) {
        shown_ = {};
        refuse(errno);
    }
    const int descriptor = ::dirfd(directory.get());
    const auto order = [](const Version& version) {
        return std::tie(version.changed.tv_sec, version.changed.tv_nsec, version.name);
    };
    Version newest;
    while (const dirent* entry = isEnding ? nullptr : ::readdir(directory.get())) {
        struct stat status {};
        const std::string name = entry->d_name;
        if (!isNamedAsPicture(name) ||
            ::fstatat(descriptor, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(status.st_mode)) {
            continue;
        }
        Version found{name, status.st_mtim, status.st_size};
        if (newest.name.empty() || order(newest) < order(found)) {
            newest = std::move(found);
        }
    }
    if (!newest.name.empty() && order(newest) == order(shown_) && newest.size == shown_.size) {
        return std::nullopt;
    }
    shown_ = {};
    if (newest.name.empty()) {
        throw Host::InputError("no picture yet");
    }
    if (newest.size > static_cast<off_t>(Picture::mostBytes)) {
        throw Host::InputError("the newest picture is larger than 8 MiB");
    }
    const std::chrono::system_clock::time_point changed{
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::seconds(newest.changed.tv_sec) +
            std::chrono::nanoseconds(newest.changed.tv_nsec))};
    Picture picture{contentsOf(descriptor, newest.name, static_cast<std::size_t>(newest.size)),
                    steadyTimeOf(changed)};
    if (mediaTypeOf(picture.bytes) == nullptr) {
        throw Host::InputError("the newest picture is neither JPEG nor PNG");
    }
    shown_ = std::move(newest);
    return picture;
}

}  // namespace Veskar::Live
