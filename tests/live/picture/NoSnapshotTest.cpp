// SPDX-License-Identifier: Apache-2.0
// In a program that cannot ask cameras for pictures.
#include <veskar-host/InputError.h>

#include "live/picture/Snapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(Snapshot, IsRefusedWithoutItsLibrary) {
    EXPECT_THAT(Veskar::Live::snapshotMissing(), testing::HasSubstr("without pictures from an"));
    EXPECT_THROW(Veskar::Live::makeSnapshot("http://camera/", ""), Veskar::Host::InputError);
}
