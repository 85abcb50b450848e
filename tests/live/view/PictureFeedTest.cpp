// SPDX-License-Identifier: Apache-2.0
// Pictures on their way to the viewers.
#include <veskar-host/InputError.h>

#include "live/view/PictureFeed.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <poll.h>

namespace Veskar::Live {
namespace {

/// Counts how often it is asked; gives a picture, nothing new, then faults.
class Script : public PictureSource {
public:
    explicit Script(std::atomic<int>& asked) : asked_(asked) {}

    std::optional<Picture> next(const std::atomic<bool>& /*isEnding*/) override {
        switch (++asked_) {
            case 1:
                return Picture{"bytes", 4.0};
            case 2:
                return std::nullopt;
            default:
                throw Host::InputError("the camera answers 500");
        }
    }

private:
    std::atomic<int>& asked_;
};

CameraPicture takeFrom(ViewMailbox& mailbox) {
    pollfd watched{mailbox.descriptor(), POLLIN, 0};
    ::poll(&watched, 1, 60'000);
    return mailbox.take().picture.value_or(CameraPicture{nullptr, "nothing was posted"});
}

TEST(PictureFeed, HandsOverEachPictureAndEachFaultOnce) {
    Audience audience;
    audience.add({});
    ViewMailbox mailbox;
    std::atomic<int> asked{0};
    const PictureFeed feed(std::make_unique<Script>(asked), 0.001, audience, mailbox);
    const CameraPicture first = takeFrom(mailbox);
    ASSERT_TRUE(first.picture);
    EXPECT_EQ(first.picture->time, 4.0);
    const CameraPicture second = takeFrom(mailbox);
    EXPECT_FALSE(second.picture);
    EXPECT_EQ(second.fault, "the camera answers 500");
    while (asked < 10) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(mailbox.take().picture);
}

TEST(PictureFeed, AsksOnlyForViewersAndEndsAtOnce) {
    Audience audience;
    ViewMailbox mailbox;
    std::atomic<int> asked{0};
    {
        const PictureFeed feed(std::make_unique<Script>(asked), 0.001, audience, mailbox);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(asked, 0);
        audience.add({});
        EXPECT_TRUE(takeFrom(mailbox).picture);
    }
    // Would wait an hour otherwise: the limit of the test.
    const PictureFeed slow(std::make_unique<Script>(asked), 3600.0, audience, mailbox);
}

}  // namespace
}  // namespace Veskar::Live
