// SPDX-License-Identifier: Apache-2.0
#include "cli/Progress.h"

#include "cli/CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace Workbench {

Progress::Progress(std::string givenTitle)
    : title(std::move(givenTitle)), isTerminal(::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (isDrawn) {
        writeError("\r\033[K");
    }
}

void Progress::update(double fraction) {
    using namespace std::chrono_literals;
    if (!isTerminal) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now - start < 1s || (isDrawn && now - drawn < 100ms)) {
        return;
    }
    drawn = now;
    isDrawn = true;
    const double seconds = std::chrono::duration<double>(now - start).count();
    if (fraction < 0.0) {
        writeError(fmt::format("\r{} {:.0f} s\033[K", title, seconds));
    } else {
        constexpr int width = 40;
        const int full = static_cast<int>(width * std::clamp(fraction, 0.0, 1.0));
        writeError(fmt::format("\r{} [{:=<{}}{: <{}}] {:3.0f} %\033[K", title, "", full, "",
                               width - full, 100.0 * fraction));
    }
    std::fflush(stderr);
}

}  // namespace Workbench
