// SPDX-License-Identifier: Apache-2.0
#include "dbus/CallbackGuard.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace {

TEST(CallbackGuard, GivesTheAnswerOfTheCall) {
    EXPECT_EQ(Veskar::guarded(-1, [] { return 7; }), 7);
}

TEST(CallbackGuard, AnswersForACallThatThrows) {
    EXPECT_EQ(Veskar::guarded(-1, []() -> int { throw std::runtime_error("no memory"); }), -1);
    EXPECT_EQ(Veskar::guarded(-1, []() -> int { throw 3; }), -1) << "whatever it throws";
}

}  // namespace
