// SPDX-License-Identifier: Apache-2.0
#include "live/support/Certificates.h"

#include "live/support/Command.h"

#include <filesystem>

namespace VeskarTest {

Certificates::Certificates() {
    makeAuthority("authority");
    makeAuthority("stranger");
    sign("server", "IP:127.0.0.1");
    sign("elsewhere", "DNS:elsewhere.example");
    sign("client", "DNS:client.example");
    runCommand({"openssl", "ec", "-in", key("client"), "-out", key("locked"), "-aes128", "-passout",
                "pass:secret"});
    std::filesystem::permissions(key("locked"), std::filesystem::perms::owner_read);
}

void Certificates::makeAuthority(const std::string& name) const {
    runCommand({"openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", key(name), "-out",
                certificate(name), "-days", "2", "-subj", "/CN=" + name});
}

void Certificates::sign(const std::string& name, const std::string& alternativeName) const {
    runCommand({"openssl",
                "req",
                "-x509",
                "-newkey",
                "ec",
                "-pkeyopt",
                "ec_paramgen_curve:prime256v1",
                "-nodes",
                "-keyout",
                key(name),
                "-out",
                certificate(name),
                "-days",
                "2",
                "-subj",
                "/CN=" + name,
                "-addext",
                "subjectAltName=" + alternativeName,
                "-addext",
                "basicConstraints=CA:FALSE",
                "-CA",
                authority(),
                "-CAkey",
                key("authority")});
}

}  // namespace VeskarTest
