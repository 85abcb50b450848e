// SPDX-License-Identifier: Apache-2.0
// Who may see the live view.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace Veskar::Live {

/// Decides about requests by their headers.
class Admission {
public:
    enum class Verdict {
        Granted,
        WrongHost,  ///< the browser was led here by a name that is not this machine's
        NoToken,    ///< the token is missing or wrong
    };

    /// Shorter tokens can be guessed.
    static constexpr std::size_t shortestToken = 16;

    /// @param token empty: none is wanted
    /// @param names by which this machine may be called, beside addresses and "localhost"
    Admission(std::string token, std::set<std::string> names);

    /// @param host the header Host
    /// @param password of the header Authorization; empty: none
    /// @return whether the request is granted
    Verdict judge(std::string_view host, std::string_view password) const;

    /// @param name of a file with the token in its first line, as secretPath() takes it
    /// @return the token
    /// @throw InputError when it cannot be read, every user may read it, or it is too short
    static std::string readToken(const std::string& name);

private:
    bool isOurs(std::string_view host) const;

    std::string token_;
    std::set<std::string> names_;
};

}  // namespace Veskar::Live
