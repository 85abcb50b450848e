// SPDX-License-Identifier: Apache-2.0
// Where a report may fetch the tiles of its map.
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "report/MapTiles.h"

#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(MapTiles, AreFetchedFromOneOrigin) {
    for (const auto& [url, origin] : std::vector<std::pair<std::string, std::string>>{
             {"https://tiles.example/{z}/{x}/{y}.png", "https://tiles.example"},
             {"http://127.0.0.1:8080/a/{z}/{y}/{x}?key=a;b'", "http://127.0.0.1:8080"},
             {"http://[::1]:80/{z}/{x}/{y}", "http://[::1]:80"}}) {
        EXPECT_EQ(Workbench::originOf(url), origin);
    }
}

TEST(MapTiles, RefuseOtherAddresses) {
    for (const auto& [url, fault] : std::vector<std::pair<std::string, std::string>>{
             {"", "is no address of tiles"},
             {"tiles/{z}/{x}/{y}.png", "is no address of tiles"},
             {"file:///tiles/{z}/{x}/{y}.png", "is no address of tiles"},
             {"https://a;script-src *{z}{x}{y}", "is no address of tiles"},
             {"https://a *.b/{z}/{x}/{y}", "is no address of tiles"},
             {"https://{z}.example/{x}/{y}", "is no address of tiles"},
             {"https://a\"b/{z}/{x}/{y}", "is no address of tiles"},
             {"https://a@b/{z}/{x}/{y}", "is no address of tiles"},
             {"https://tiles.example", "is no address of tiles"},
             {"https://tiles.example/{x}/{y}", "has no {z}"},
             {"https://tiles.example/{z}/{x}/{y}/{s}", "has other parts in braces"}}) {
        try {
            Workbench::originOf(url);
            FAIL() << url;
        } catch (const Workbench::InputError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr(fault)) << url;
        }
    }
}
