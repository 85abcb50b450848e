// SPDX-License-Identifier: Apache-2.0
// A global locale with other decimal separators.
#pragma once

#include <locale>
#include <string>

namespace VeskarTest {

/// During its lifetime the global locale writes 1234.5 as 1.234,5.
class CommaLocale {
public:
    CommaLocale() : before_(std::locale::global(std::locale(std::locale(), new Punctuation))) {}
    ~CommaLocale() { std::locale::global(before_); }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale before_;
};

}  // namespace VeskarTest
