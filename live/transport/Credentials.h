// SPDX-License-Identifier: Apache-2.0
// Secrets of connections, which stand in files.
#pragma once

#include <string>

namespace Veskar::Live {

/// User and password.
struct Credentials {
    std::string user;
    std::string password;

    /// @param name of a file with the user in the first line and the password in the second, not
    ///             readable for every user, as secretPath() takes it
    /// @return its contents
    /// @throw InputError when it cannot be read, every user may read or write it, or it has no user
    static Credentials read(const std::string& name);
};

/// @param name as the configuration has it
/// @return whether systemd hands the file to the service
bool isHandedOver(const std::string& name);

/// The path of a file with a secret, which not every user may read or write. The credential NAME
/// that systemd hands to a service (LoadCredential= in systemd.exec(5)) is
/// "$CREDENTIALS_DIRECTORY/NAME"; nothing else is replaced.
/// @param name as the configuration has it
/// @return the path
/// @throw InputError when there is no such directory
std::string secretPath(const std::string& name);

/// @param name as secretPath() takes it
/// @return the first line of the file
/// @throw InputError when it cannot be read, or by every user
std::string readSecretLine(const std::string& name);

/// @param name as secretPath() takes it
/// @throw InputError when it cannot be read, or by every user
void checkSecret(const std::string& name);

}  // namespace Veskar::Live
