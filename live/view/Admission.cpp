// SPDX-License-Identifier: Apache-2.0
#include "live/view/Admission.h"

#include <veskar-host/InputError.h>

#include "live/transport/Credentials.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include <arpa/inet.h>

namespace Veskar::Live {
namespace {

/// @return the host of "HOST:PORT", in lower case, without the brackets of an IPv6 address
std::string withoutPort(std::string_view host) {
    if (!host.empty() && host.front() == '[') {
        host = host.substr(1, host.find(']') - 1);
    } else {
        host = host.substr(0, host.find(':'));
    }
    std::string name(host);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return name;
}

/// @return whether a name server had no part in it
bool isAddress(const std::string& host) {
    in_addr four{};
    in6_addr six{};
    return ::inet_pton(AF_INET, host.c_str(), &four) == 1 ||
           ::inet_pton(AF_INET6, host.c_str(), &six) == 1;
}

/// Takes as long whatever the first difference is: the time must not tell how much is right.
bool isSameSecret(std::string_view given, std::string_view secret) {
    unsigned difference = given.size() == secret.size() ? 0U : 1U;
    for (std::size_t i = 0; i < secret.size(); ++i) {
        const char letter = i < given.size() ? given[i] : '\0';
        difference |= static_cast<unsigned char>(letter) ^ static_cast<unsigned char>(secret[i]);
    }
    return difference == 0;
}

}  // namespace

Admission::Admission(std::string token, std::set<std::string> names)
    : token_(std::move(token)), names_(std::move(names)) {}

Admission::Verdict Admission::judge(std::string_view host, std::string_view password) const {
    if (!isOurs(host)) {
        return Verdict::WrongHost;
    }
    return token_.empty() || isSameSecret(password, token_) ? Verdict::Granted : Verdict::NoToken;
}

/// A page elsewhere can let its own name point here, and would then read everything as its own;
/// it cannot do so with an address.
bool Admission::isOurs(std::string_view host) const {
    const std::string name = withoutPort(host);
    return name == "localhost" || isAddress(name) || names_.count(name) != 0;
}

std::string Admission::readToken(const std::string& name) {
    std::string token = readSecretLine(name);
    if (token.size() < shortestToken) {
        throw Host::InputError(
            secretPath(name),
            Host::InputError("the token in its first line has " + std::to_string(token.size()) +
                             " bytes, not " + std::to_string(shortestToken) + " at least"));
    }
    return token;
}

}  // namespace Veskar::Live
