// SPDX-License-Identifier: Apache-2.0
#include "support/PrivateBus.h"

#include "support/SystemCall.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeskarTest {
namespace {

void setSystemBus(const std::string& address) {
    checked(setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1), "setenv");
}

/// Reads the line in which the daemon announces its address.
void awaitAddress(int descriptor) {
    char character = '\0';
    while (character != '\n') {
        if (checked(static_cast<int>(read(descriptor, &character, 1)), "read") == 0) {
            throw std::runtime_error("dbus-daemon did not start");
        }
    }
}

}  // namespace

PrivateBus::PrivateBus(const std::string& extraConfiguration) {
    std::string pattern = "/tmp/veskar-bus-XXXXXX";
    checked(mkdtemp(pattern.data()) == nullptr ? -1 : 0, "mkdtemp");
    directory_ = pattern;
    const std::string address = "unix:path=" + directory_ + "/bus";
    const std::string configuration = directory_ + "/bus.conf";
    std::ofstream(configuration)
        << R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN")"
           R"( "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd"><busconfig><listen>)"
        << address
        << R"(</listen><auth>EXTERNAL</auth><policy context="default"><allow send_destination="*"/>)"
           R"(<allow receive_sender="*"/><allow own="*"/></policy>)"
        << extraConfiguration << "</busconfig>\n";

    std::array<int, 2> ready{};
    checked(pipe2(ready.data(), O_CLOEXEC), "pipe2");
    const std::string fileOption = "--config-file=" + configuration;
    daemon_ = checked(fork(), "fork");
    if (daemon_ == 0) {
        // Ends with the test program, even if that crashes.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(ready[1], STDOUT_FILENO);
        execlp("dbus-daemon", "dbus-daemon", fileOption.c_str(), "--nofork", "--print-address=1",
               static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ready[1]);
    awaitAddress(ready[0]);
    close(ready[0]);
    setSystemBus(address);
}

PrivateBus::~PrivateBus() {
    kill();
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

void PrivateBus::stop() {
    checked(::kill(daemon_, SIGSTOP), "kill");
    checked(waitpid(daemon_, nullptr, WUNTRACED), "waitpid");
}

void PrivateBus::kill() {
    if (daemon_ > 0) {
        ::kill(daemon_, SIGKILL);
        waitpid(daemon_, nullptr, 0);
        daemon_ = -1;
    }
}

void leaveSystemBus() {
    setSystemBus("unix:path=/nonexistent/veskar-test-bus");
}

}  // namespace VeskarTest
