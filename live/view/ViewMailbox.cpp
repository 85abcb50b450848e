// SPDX-License-Identifier: Apache-2.0
#include "live/view/ViewMailbox.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <sys/eventfd.h>

namespace Veskar::Live {

ViewMailbox::ViewMailbox() : woken_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!woken_) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void ViewMailbox::post(ViewState state) {
    std::optional<ViewState> posted(std::move(state));
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        contents_.state.swap(posted);
    }
    wake();
}

void ViewMailbox::post(std::string status) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        contents_.status = std::move(status);
    }
    wake();
}

void ViewMailbox::post(Decision decision) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (contents_.decisions.size() < mostDecisions) {
        contents_.decisions.push_back(std::move(decision));
    }
}

void ViewMailbox::post(CameraPicture picture) {
    std::optional<CameraPicture> posted(std::move(picture));
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        contents_.picture.swap(posted);
    }
    wake();
}

void ViewMailbox::wake() {
    ::eventfd_write(woken_.get(), 1);
}

ViewMailbox::Contents ViewMailbox::take() {
    std::uint64_t count = 0;
    ::eventfd_read(woken_.get(), &count);
    const std::lock_guard<std::mutex> lock(mutex_);
    return std::exchange(contents_, {});
}

}  // namespace Veskar::Live
