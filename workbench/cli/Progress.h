// SPDX-License-Identifier: Apache-2.0
// A progress bar for operations that take longer than a second.
#pragma once

#include <chrono>
#include <exception>
#include <string>

namespace Workbench {

/// Draws on standard error when that is a terminal, and only after a second. Tells at its end how
/// long the operation took when the user wants to know.
class Progress {
public:
    /// @param title name of the operation
    explicit Progress(std::string title);
    /// Clears the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @param fraction completed part, 0 to 1; negative when unknown
    void update(double fraction);

private:
    using Clock = std::chrono::steady_clock;

    std::string title_;
    bool isShown_;
    bool isDrawn_ = false;
    int exceptions_ = std::uncaught_exceptions();
    Clock::time_point start_ = Clock::now();
    Clock::time_point drawn_ = Clock::now();
};

}  // namespace Workbench
