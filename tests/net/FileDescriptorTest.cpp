// SPDX-License-Identifier: Apache-2.0
#include "net/FileDescriptor.h"

#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

using Veskar::FileDescriptor;

bool isOpen(int number) {
    return fcntl(number, F_GETFD) >= 0;
}

FileDescriptor openNull() {
    return FileDescriptor(open("/dev/null", O_RDONLY | O_CLOEXEC));
}

TEST(FileDescriptor, ClosesWhatItOwnsAtItsEnd) {
    int number = -1;
    {
        const FileDescriptor descriptor = openNull();
        number = descriptor.get();
        ASSERT_TRUE(descriptor);
        EXPECT_TRUE(isOpen(number));
    }
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, IsEmptyWhereNothingWasOpened) {
    EXPECT_FALSE(FileDescriptor());
    EXPECT_FALSE(FileDescriptor(-1));
    EXPECT_TRUE(FileDescriptor(dup(0))) << "0 and above are descriptors";
}

TEST(FileDescriptor, IsEmptyOnceClosed) {
    FileDescriptor descriptor = openNull();
    const int number = descriptor.get();
    descriptor.reset();
    EXPECT_FALSE(descriptor);
    EXPECT_FALSE(isOpen(number));
}

TEST(FileDescriptor, HandsItsDescriptorOver) {
    FileDescriptor first = openNull();
    const int number = first.get();
    FileDescriptor second(std::move(first));
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what is promised
    EXPECT_EQ(second.get(), number);
    FileDescriptor third;
    third = std::move(second);
    EXPECT_EQ(third.get(), number);
    EXPECT_TRUE(isOpen(number));
}

}  // namespace
