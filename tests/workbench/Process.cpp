// SPDX-License-Identifier: Apache-2.0
#include "Process.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <fcntl.h>
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

}  // namespace

Outcome run(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryDirectory directory;
    const std::string in = directory / "in";
    const std::string out = directory / "out";
    const std::string err = directory / "err";
    spill(in, input);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
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
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), slurp(out), slurp(err)};
}

Outcome veskar(std::vector<std::string> arguments, const std::string& input) {
    arguments.insert(arguments.begin(), VESKAR_PROGRAM);
    return run(arguments, input);
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

TemporaryDirectory::TemporaryDirectory() {
    const char* base = std::getenv("TMPDIR");
    path = std::string(base != nullptr ? base : "/tmp") + "/veskar-test-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("cannot create a directory");
    }
}

TemporaryDirectory::~TemporaryDirectory() {
    std::filesystem::remove_all(path);
}

std::vector<std::string> TemporaryDirectory::names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        found.push_back(entry.path().filename());
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace VeskarTest
