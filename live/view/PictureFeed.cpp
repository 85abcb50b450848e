// SPDX-License-Identifier: Apache-2.0
#include "live/view/PictureFeed.h"

#include <exception>
#include <utility>

namespace Veskar::Live {

PictureFeed::PictureFeed(std::unique_ptr<PictureSource> source, double interval,
                         const Audience& audience, ViewMailbox& mailbox)
    : source_(std::move(source)),
      interval_(interval),
      audience_(audience),
      mailbox_(mailbox),
      thread_([this] { run(); }) {
    ::pthread_setname_np(thread_.native_handle(), "pictures");
}

PictureFeed::~PictureFeed() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnding_ = true;
    }
    end_.notify_one();
    thread_.join();
}

void PictureFeed::run() {
    std::unique_lock<std::mutex> lock(mutex_);
    do {
        lock.unlock();
        if (audience_.isThere()) {
            look();
        }
        lock.lock();
        // The end may have been told during the look.
    } while (!end_.wait_for(lock, interval_, [this] { return isEnding_.load(); }));
}

void PictureFeed::look() {
    try {
        if (std::optional<Picture> picture = source_->next(isEnding_)) {
            fault_.clear();
            mailbox_.post(CameraPicture{std::make_shared<const Picture>(*std::move(picture)), {}});
        }
    } catch (const std::exception& error) {
        if (fault_ != error.what()) {
            fault_ = error.what();
            mailbox_.post(CameraPicture{nullptr, fault_});
        }
    }
}

}  // namespace Veskar::Live
