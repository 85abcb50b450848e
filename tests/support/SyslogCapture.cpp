// SPDX-License-Identifier: Apache-2.0
#include "support/SyslogCapture.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

#include <gtest/gtest.h>
#include <syslog.h>

namespace VeskarTest {
namespace {

std::mutex mutex;
bool active = false;
std::vector<SyslogCapture::Line> captured;

void record(int priority, const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    const std::lock_guard<std::mutex> lock(mutex);
    if (active) {
        captured.push_back({priority, std::move(text)});
    } else {
        std::fprintf(stderr, "syslog <%d> %s", priority, text.c_str());
    }
}

}  // namespace

SyslogCapture::SyslogCapture() {
    const std::lock_guard<std::mutex> lock(mutex);
    EXPECT_FALSE(active) << "only one capture at a time";
    active = true;
    captured.clear();
}

SyslogCapture::~SyslogCapture() {
    const std::lock_guard<std::mutex> lock(mutex);
    active = false;
}

std::vector<SyslogCapture::Line> SyslogCapture::lines() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return captured;
}

std::vector<std::string> SyslogCapture::errors() const {
    std::vector<std::string> texts;
    for (const Line& line : lines()) {
        EXPECT_EQ(line.priority, LOG_ERR) << line.text;
        texts.push_back(line.text);
    }
    return texts;
}

std::vector<std::string> SyslogCapture::texts(int priority) const {
    std::vector<std::string> texts;
    for (const Line& line : lines()) {
        if (line.priority == priority) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

void SyslogCapture::clear() {
    const std::lock_guard<std::mutex> lock(mutex);
    captured.clear();
}

std::unique_lock<std::mutex> SyslogCapture::holdUp() {
    return std::unique_lock<std::mutex>(mutex);
}

}  // namespace VeskarTest

// These definitions override those of the C library, with and without fortification.
extern "C" {
// NOLINTNEXTLINE(cert-dcl50-cpp,readability-inconsistent-declaration-parameter-name)
void syslog(int priority, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    VeskarTest::record(priority, format, arguments);
    va_end(arguments);
}

// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl50-cpp,readability-identifier-naming)
void __syslog_chk(int priority, int /*flag*/, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    VeskarTest::record(priority, format, arguments);
    va_end(arguments);
}
}
