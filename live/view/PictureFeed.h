// SPDX-License-Identifier: Apache-2.0
// Hands the camera's pictures to the server of the live view.
#pragma once

#include "live/picture/PictureSource.h"
#include "live/view/Audience.h"
#include "live/view/ViewMailbox.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace Veskar::Live {

/// Looks for pictures on a thread of its own while there are viewers.
class PictureFeed {
public:
    /// @param source of the pictures
    /// @param interval between two looks, s
    /// @param audience tells whether there are viewers; must outlive this
    /// @param mailbox receives the pictures; must outlive this
    PictureFeed(std::unique_ptr<PictureSource> source, double interval, const Audience& audience,
                ViewMailbox& mailbox);
    ~PictureFeed();
    PictureFeed(const PictureFeed&) = delete;
    PictureFeed& operator=(const PictureFeed&) = delete;

private:
    void run();
    void look();

    std::unique_ptr<PictureSource> source_;
    std::chrono::duration<double> interval_;
    const Audience& audience_;
    ViewMailbox& mailbox_;
    std::string fault_;  ///< that viewers were told last; empty: none
    std::atomic<bool> isEnding_{false};
    std::mutex mutex_;
    std::condition_variable end_;
    std::thread thread_;
};

}  // namespace Veskar::Live
