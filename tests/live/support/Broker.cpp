// SPDX-License-Identifier: Apache-2.0
#include "live/support/Broker.h"

#include "live/support/FreePort.h"

#include <fstream>

#if defined(__SANITIZE_THREAD__)
// libmosquitto unlocks a mutex that it does not hold where a session ends. No other thread uses the
// session, so that nothing depends on it.
// NOLINTBEGIN: the sanitizer's name, by which it finds this from its own library
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "mutex:libmosquitto.so";
}
// NOLINTEND
#endif

namespace VeskarTest {

Broker::Broker() : Broker(Options()) {}

Broker::Broker(const Options& options) : port_(freePort()) {
    std::ofstream(directory_.file("broker.conf")) << configuration(options);
    if (!options.user.empty()) {
        runCommand({"mosquitto_passwd", "-b", "-c", directory_.file("users"), options.user,
                    options.password});
    }
    std::ofstream(directory_.file("access")) << options.access;
    restart();
}

std::string Broker::configuration(const Options& options) const {
    // Started by root, it would become a user who may not read the files.
    std::string text =
        "user root\nlog_dest stderr\nlog_type information\nmax_packet_size 100000000\n"
        "max_queued_messages 0\n"  // without limit
        "listener " +
        std::to_string(port_) + " 127.0.0.1\n";
    text += options.user.empty() ? "allow_anonymous true\n"
                                 : "password_file " + directory_.file("users") + "\n";
    if (!options.access.empty()) {
        text += "acl_file " + directory_.file("access") + "\n";
    }
    if (!options.certificate.empty()) {
        text += "cafile " + options.authority + "\ncertfile " + options.certificate + "\nkeyfile " +
                options.key + "\n";
        text += options.asksForCertificate ? "require_certificate true\n" : "";
    }
    return text;
}

void Broker::restart() {
    daemon_.emplace(std::vector<std::string>{"mosquitto", "-c", directory_.file("broker.conf")},
                    " running");
}

}  // namespace VeskarTest
