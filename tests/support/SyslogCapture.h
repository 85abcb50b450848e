// SPDX-License-Identifier: Apache-2.0
// Captures messages to the system log.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace VeskarTest {

/// During its lifetime, calls of syslog() from any thread of this process are recorded instead of
/// sent.
class SyslogCapture {
public:
    /// One call of syslog().
    struct Line {
        int priority;
        std::string text;  ///< formatted, with its newline
    };

    SyslogCapture();
    ~SyslogCapture();
    SyslogCapture(const SyslogCapture&) = delete;
    SyslogCapture& operator=(const SyslogCapture&) = delete;

    /// @return the calls so far, in order
    std::vector<Line> lines() const;
    /// @return the texts of the calls so far; fails the test when one is not at error priority
    std::vector<std::string> errors() const;
    /// @return the texts of the calls so far at one priority
    std::vector<std::string> texts(int priority) const;
    void clear();

    /// @return while it is locked, callers of syslog() wait
    static std::unique_lock<std::mutex> holdUp();
};

}  // namespace VeskarTest
