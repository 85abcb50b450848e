// SPDX-License-Identifier: Apache-2.0
// Counts what a scene description states and the fusion has no place for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Counts what was left out, by the name of the term. Names come from messages: only the first 128
/// different ones are kept apart, further ones are counted together, and whoever shows them has to
/// escape control characters.
class LeftOut {
public:
    /// @param term what was left out: "Appearance.HumanFace", "Class Fire"
    void add(std::string_view term);

    /// @return how often each term was left out; "other terms" for those beyond the limit
    const std::map<std::string, std::uint64_t, std::less<>>& counts() const { return counts_; }

private:
    static constexpr std::size_t mostTerms = 128;
    static constexpr std::size_t longestTerm = 80;

    std::map<std::string, std::uint64_t, std::less<>> counts_;
};

}  // namespace Veskar::Live
