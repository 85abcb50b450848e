// SPDX-License-Identifier: Apache-2.0
// Certificates of the tests, made by openssl.
#pragma once

#include "support/TemporaryDirectory.h"

#include <string>

namespace VeskarTest {

/// An authority, and what it has signed. Making them takes a moment.
class Certificates {
public:
    Certificates();

    /// @return the authority's certificate
    std::string authority() const { return directory_.file("authority.pem"); }
    /// @return that of another authority, which has signed nothing here
    std::string stranger() const { return directory_.file("stranger.pem"); }
    /// @param name "server" (127.0.0.1), "elsewhere" (another host) or "client"
    std::string certificate(const std::string& name) const {
        return directory_.file(name + ".pem");
    }
    /// @param name as above, or "locked": the client's, with a passphrase
    std::string key(const std::string& name) const { return directory_.file(name + ".key"); }

private:
    void makeAuthority(const std::string& name) const;
    void sign(const std::string& name, const std::string& alternativeName) const;

    const TemporaryDirectory directory_;
};

}  // namespace VeskarTest
