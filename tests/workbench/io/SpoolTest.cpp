// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "io/Spool.h"

#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <string>

#include <gmock/gmock.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> countTo(std::size_t count) {
    std::vector<int> values(count);
    std::iota(values.begin(), values.end(), 0);
    return values;
}

/// Sets the directory for temporary files as long as it lives.
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(const std::string& path) { ::setenv("TMPDIR", path.c_str(), 1); }
    ~TemporaryDirectory() {
        if (former_.empty()) {
            ::unsetenv("TMPDIR");
        } else {
            ::setenv("TMPDIR", former_.c_str(), 1);
        }
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

private:
    std::string former_ = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "";
};

TEST(Spool, ReadsListsInTheOrderInWhichTheyWereWritten) {
    Spool spool;
    spool.write(std::vector<int>{1, 2});
    spool.write(std::vector<double>{});
    spool.write(std::vector<double>{0.5});
    spool.rewind();
    EXPECT_THAT(spool.read<int>(), ElementsAre(1, 2));
    EXPECT_THAT(spool.read<double>(), IsEmpty());
    EXPECT_THAT(spool.read<double>(), ElementsAre(0.5));
}

TEST(Spool, ReadsWhatExceedsMemory) {
    Spool spool;
    // Lists that are longer and shorter than the parts that are read at once.
    const std::vector<int> lengthy = countTo(Spool::memoryLimit);
    for (int i = 0; i < 3; ++i) {
        spool.write(lengthy);
        spool.write(std::vector<int>{i});
    }
    spool.rewind();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(spool.read<int>(), lengthy);
        EXPECT_THAT(spool.read<int>(), ElementsAre(i));
    }
}

TEST(Spool, GoesOnWritingAfterReading) {
    for (const std::size_t length : {std::size_t{3}, Spool::memoryLimit}) {
        Spool spool;
        spool.write(countTo(length));
        spool.rewind();
        spool.read<int>();
        spool.write(std::vector<int>{7});
        spool.rewind();
        EXPECT_EQ(spool.read<int>(), countTo(length));
        EXPECT_THAT(spool.read<int>(), ElementsAre(7));
    }
}

TEST(Spool, LeavesNoFileBehind) {
    const std::filesystem::path directory =
        std::filesystem::path(testing::TempDir()) / "veskar-spool-test";
    std::filesystem::create_directory(directory);
    const TemporaryDirectory here(directory.string());
    Spool spool;
    spool.write(countTo(Spool::memoryLimit));
    EXPECT_TRUE(std::filesystem::is_empty(directory));
    std::filesystem::remove(directory);
}

TEST(Spool, SaysWhereNoFileCanBeMade) {
    const TemporaryDirectory nowhere("/proc/self");
    Spool spool;
    try {
        spool.write(countTo(Spool::memoryLimit));
        ADD_FAILURE() << "no fault";
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("/proc/self/veskar-"));
        EXPECT_THAT(error.reason(), testing::StartsWith("cannot create: "));
    }
}

}  // namespace
}  // namespace Workbench
