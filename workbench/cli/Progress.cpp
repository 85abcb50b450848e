// SPDX-License-Identifier: Apache-2.0
#include "cli/Progress.h"

#include "cli/CommandLine.h"
#include "cli/Terminal.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace Workbench {

Progress::Progress(std::string title)
    : title_(std::move(title)),
      isShown_(terminalSettings().hasProgress && !terminalSettings().isQuiet &&
               ::isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (isDrawn_) {
        writeError("\r\033[K");
    }
    if (terminalSettings().isVerbose && std::uncaught_exceptions() == exceptions_) {
        const std::chrono::duration<double> taken = Clock::now() - start_;
        writeError(fmt::format("veskar: {} took {:.2f} s\n", title_, taken.count()));
    }
}

void Progress::update(double fraction) {
    using namespace std::chrono_literals;
    if (!isShown_) {
        return;
    }
    const Clock::time_point now = Clock::now();
    if (now - start_ < 1s || (isDrawn_ && now - drawn_ < 100ms)) {
        return;
    }
    drawn_ = now;
    isDrawn_ = true;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    if (fraction < 0.0) {
        writeError(fmt::format("\r{} {:.0f} s\033[K", title_, seconds));
    } else {
        constexpr int width = 40;
        const int full = static_cast<int>(width * std::clamp(fraction, 0.0, 1.0));
        writeError(fmt::format("\r{} [{:=<{}}{: <{}}] {:3.0f} %\033[K", title_, "", full, "",
                               width - full, 100.0 * fraction));
    }
    std::fflush(stderr);
}

}  // namespace Workbench
