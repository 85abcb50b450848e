// SPDX-License-Identifier: Apache-2.0
#include "Process.h"

#include "Programs.h"
#include "SourceDirectory.h"

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeskarTest {
namespace {

void redirect(const std::string& path, int flags, int target) {
    const int descriptor = ::open(path.c_str(), flags, 0600);
    if (descriptor < 0 || ::dup2(descriptor, target) < 0) {
        ::_exit(126);
    }
}

std::vector<char*> pointersTo(const std::vector<std::string>& arguments) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

int exitStatus(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Polls a condition until a timeout.
template <typename Condition>
bool becomesTrue(Condition condition, std::chrono::seconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace

Outcome run(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryDirectory directory;
    const std::string in = directory / "in";
    const std::string out = directory / "out";
    const std::string err = directory / "err";
    spill(in, input);
    const std::vector<char*> pointers = pointersTo(arguments);
    const pid_t child = ::fork();
    if (child == 0) {
        redirect(in, O_RDONLY, STDIN_FILENO);
        redirect(out, O_WRONLY | O_CREAT, STDOUT_FILENO);
        redirect(err, O_WRONLY | O_CREAT, STDERR_FILENO);
        ::execvp(pointers[0], pointers.data());
        ::_exit(127);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) {
        throw std::runtime_error("cannot run " + arguments.front());
    }
    return {exitStatus(status), slurp(out), slurp(err)};
}

Outcome veskar(std::vector<std::string> arguments, const std::string& input) {
    arguments.insert(arguments.begin(), VESKAR_PROGRAM);
    return run(arguments, input);
}

RunningProgram::RunningProgram(std::vector<std::string> arguments, const Streams& streams,
                               int ignored) {
    arguments.insert(arguments.begin(), VESKAR_PROGRAM);
    const std::string out = directory_ / "out";
    const std::string err = directory_ / "err";
    const std::vector<char*> pointers = pointersTo(arguments);
    child_ = ::fork();
    if (child_ == 0) {
        // The test runner may ignore signals itself; core dumps are not wanted.
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
            ::signal(signal, signal == ignored ? SIG_IGN : SIG_DFL);
        }
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_CORE, &none);
        if (streams.errors < 0) {
            redirect(err, O_WRONLY | O_CREAT, STDERR_FILENO);
        } else {
            ::dup2(streams.errors, STDERR_FILENO);
        }
        if (streams.input < 0) {
            redirect("/dev/null", O_RDONLY, STDIN_FILENO);
        } else {
            ::dup2(streams.input, STDIN_FILENO);
        }
        if (streams.output < 0) {
            redirect(out, O_WRONLY | O_CREAT, STDOUT_FILENO);
        } else {
            ::dup2(streams.output, STDOUT_FILENO);
        }
        ::execvp(pointers[0], pointers.data());
        ::_exit(127);
    }
    if (child_ < 0) {
        throw std::runtime_error("cannot run " + arguments.front());
    }
}

RunningProgram::~RunningProgram() {
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
}

bool RunningProgram::listens() const {
    const std::string status = slurp("/proc/" + std::to_string(child_) + "/status");
    const std::string caught = "SigCgt:\t";
    const std::size_t place = status.find(caught);
    if (place == std::string::npos) {
        return false;
    }
    const std::uint64_t signals =
        std::stoull(status.substr(place + caught.size(), 16), nullptr, 16);
    return (signals >> (SIGTERM - 1) & 1) != 0;
}

void RunningProgram::await(const std::function<bool()>& condition) const {
    if (!becomesTrue(condition, std::chrono::seconds(60))) {
        throw std::runtime_error("the program does not get there");
    }
}

void RunningProgram::awaitOutput() const {
    await([this] { return !slurp(directory_ / "out").empty(); });
}

void RunningProgram::awaitIdle() const {
    await([this] { return listens(); });
    const std::string path = "/proc/" + std::to_string(child_) + "/stat";
    const auto isIdle = [&] {
        const std::string text = slurp(path);
        const std::size_t place = text.rfind(')');
        return place != std::string::npos && text.substr(place + 2, 1) == "S";
    };
    await(isIdle);
}

void RunningProgram::send(int signal) const {
    // -1 would be every process.
    if (child_ > 0) {
        ::kill(child_, signal);
    }
}

std::string RunningProgram::errors() const {
    return slurp(directory_ / "err");
}

Outcome RunningProgram::finish() {
    int status = 0;
    const auto hasEnded = [&] { return ::waitpid(child_, &status, WNOHANG) == child_; };
    if (!becomesTrue(hasEnded, std::chrono::seconds(60))) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, &status, 0);
    }
    child_ = -1;
    return {exitStatus(status), slurp(directory_ / "out"), slurp(directory_ / "err")};
}

std::string dataFile(const std::string& name) {
    return std::string(VESKAR_SOURCE_DIR) + "/tests/workbench/data/" + name;
}

std::string slurp(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void spill(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

}  // namespace VeskarTest
