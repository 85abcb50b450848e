// SPDX-License-Identifier: Apache-2.0
#include "FusedText.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

using Workbench::FusedTrack;

TEST(FusedCsv, RowsHaveTheHeadersColumns) {
    Workbench::FusedFrame frame{5.0, 5.1, Veskar::Radar, {FusedTrack(), FusedTrack()}};
    frame.tracks[0].labels.color.name = "odd, \"quoted\"";
    frame.tracks[0].ground.emplace();
    const std::string rows = Workbench::csvHeader() + VeskarTest::csvRows(frame);
    std::istringstream lines(rows);
    std::string line;
    while (std::getline(lines, line)) {
        int columns = 1;
        bool isQuoted = false;
        for (const char c : line) {
            isQuoted = c == '"' ? !isQuoted : isQuoted;
            columns += c == ',' && !isQuoted ? 1 : 0;
        }
        EXPECT_EQ(columns, 29) << line;
    }
    EXPECT_NE(rows.find("\"odd, \"\"quoted\"\"\""), std::string::npos);
}
