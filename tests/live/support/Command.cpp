// SPDX-License-Identifier: Apache-2.0
#include "live/support/Command.h"

#include "support/Pipe.h"
#include "support/SystemCall.h"

#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeskarTest {
namespace {

pid_t start(const std::vector<std::string>& arguments, int standardError) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    const pid_t process = checked(::fork(), "fork");
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int null = ::open("/dev/null", O_RDWR);
        ::dup2(null, STDIN_FILENO);
        ::dup2(null, STDOUT_FILENO);
        ::dup2(standardError < 0 ? null : standardError, STDERR_FILENO);
        ::execvp(pointers[0], pointers.data());
        ::_exit(127);
    }
    return process;
}

}  // namespace

void runCommand(const std::vector<std::string>& arguments) {
    int status = 0;
    checked(::waitpid(start(arguments, -1), &status, 0), "waitpid");
    if (status != 0) {
        throw std::runtime_error(arguments[0] + " failed");
    }
}

Daemon::Daemon(const std::vector<std::string>& arguments, const std::string& ready) {
    Pipe pipe;
    process_ = start(arguments, pipe.writer.get());
    pipe.writer.reset();
    log_ = std::move(pipe.reader);
    std::string log;
    while (log.find(ready) == std::string::npos) {
        const std::string more = readSome(log_.get());
        if (more.empty()) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            throw std::runtime_error(arguments[0] + " did not start: " + log);
        }
        log += more;
    }
}

Daemon::~Daemon() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
}

void Daemon::signal(int number) const {
    checked(::kill(process_, number), "kill");
    if (number == SIGSTOP) {
        checked(::waitpid(process_, nullptr, WUNTRACED), "waitpid");
    }
}

}  // namespace VeskarTest
