// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "recording/FileFormat.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(FileFormat, IsWhatTheFirstLineStates) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "file";
    const std::string late = "{\"name\":\"" + std::string(5000, 'x') + "\",\"format\":\"a\"}\n";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"{\"format\":\"veskar-fused\",\"version\":1}\n{}", "veskar-fused"},
        {late, "a"},
        {"{\"name\":\"\\\"format\\\":\\\"a\\\"\"}\n", ""},
        {"{}\n{\"format\":\"a\"}\n", ""},
        {"{\"format\":7}\n", ""},
        {"[\"format\"]\n", ""},
        {"7\n", ""},
        {"{\"format\":\"a\"", ""},
        {"", ""},
    };
    for (const auto& [text, format] : cases) {
        VeskarTest::spill(path, text);
        EXPECT_EQ(Workbench::formatOf(path), format) << text;
    }
    EXPECT_THROW(Workbench::formatOf(directory / "nowhere"), Veskar::Host::InputError);
}

}  // namespace
