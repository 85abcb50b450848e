// SPDX-License-Identifier: Apache-2.0
// Pictures on their way to the viewers.
#include <veskar-host/InputError.h>

#include "live/view/PictureFeed.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>
#include <poll.h>

namespace Veskar::Live {
namespace {

struct Camera {
    std::atomic<int> asked{0};
    std::atomic<bool> isBroken{false};
};

/// Gives a picture, then nothing new until the camera is broken.
class Script : public PictureSource {
public:
    explicit Script(Camera& camera) : camera_(camera) {}

    std::optional<Picture> next(const std::atomic<bool>& /*isEnding*/) override {
        if (++camera_.asked == 1) {
            return Picture{"bytes", 4.0};
        }
        if (camera_.isBroken) {
            throw Host::InputError("the camera answers 500");
        }
        return std::nullopt;
    }

private:
    Camera& camera_;
};

/// Notices the end late.
class SlowSource : public PictureSource {
public:
    explicit SlowSource(std::atomic<bool>& isAsked) : isAsked_(isAsked) {}

    std::optional<Picture> next(const std::atomic<bool>& isEnding) override {
        isAsked_ = true;
        while (!isEnding) {
            std::this_thread::yield();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return std::nullopt;
    }

private:
    std::atomic<bool>& isAsked_;
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
    Camera camera;
    const PictureFeed feed(std::make_unique<Script>(camera), 0.001, audience, mailbox);
    const CameraPicture first = takeFrom(mailbox);
    ASSERT_TRUE(first.picture);
    EXPECT_EQ(first.picture->time, 4.0);
    camera.isBroken = true;
    const CameraPicture second = takeFrom(mailbox);
    EXPECT_FALSE(second.picture);
    EXPECT_EQ(second.fault, "the camera answers 500");
    for (const int asked = camera.asked; camera.asked < asked + 10;) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(mailbox.take().picture);
}

TEST(PictureFeed, AsksOnlyForViewersAndEndsAtOnce) {
    Audience audience;
    ViewMailbox mailbox;
    Camera camera;
    {
        const PictureFeed feed(std::make_unique<Script>(camera), 0.001, audience, mailbox);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(camera.asked, 0);
        audience.add({});
        EXPECT_TRUE(takeFrom(mailbox).picture);
    }
    // Would wait an hour otherwise: the limit of the test.
    const PictureFeed slow(std::make_unique<Script>(camera), 3600.0, audience, mailbox);
}

TEST(PictureFeed, EndsAtOnceWhenItIsToldDuringALook) {
    Audience audience;
    audience.add({});
    ViewMailbox mailbox;
    std::atomic<bool> isAsked{false};
    const PictureFeed feed(std::make_unique<SlowSource>(isAsked), 3600.0, audience, mailbox);
    while (!isAsked) {
        std::this_thread::yield();
    }
    // Would wait an hour otherwise: the limit of the test.
}

}  // namespace
}  // namespace Veskar::Live
