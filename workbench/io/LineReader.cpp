// SPDX-License-Identifier: Apache-2.0
#include "io/LineReader.h"

#include "io/InputError.h"
#include "io/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {

LineReader::LineReader(const std::string& path) : shownName(path == "-" ? "<stdin>" : path) {
    descriptor = path == "-" ? ::dup(STDIN_FILENO) : openFile(path, O_RDONLY);
    if (descriptor < 0) {
        throw InputError(fmt::format("{}: {}", shownName, std::strerror(errno)));
    }
    stopDescriptor = ::eventfd(0, EFD_CLOEXEC);
    if (stopDescriptor < 0) {
        const int fault = errno;
        ::close(descriptor);
        throw InputError(fmt::format("{}: {}", shownName, std::strerror(fault)));
    }
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) {
        total = static_cast<std::uint64_t>(status.st_size);
    }
    buffer.resize((std::size_t{256} << 10) + padding);
}

LineReader::~LineReader() {
    ::close(descriptor);
    ::close(stopDescriptor);
}

void LineReader::stop() {
    const std::uint64_t one = 1;
    static_cast<void>(::write(stopDescriptor, &one, sizeof one));
}

void LineReader::waitForInput() const {
    if (waitFor({{descriptor, POLLIN, 0}, {stopDescriptor, POLLIN, 0}})[1].revents != 0) {
        throw InputError(shownName + ": reading was stopped");
    }
}

bool LineReader::fill() {
    if (begin > 0) {
        std::memmove(buffer.data(), buffer.data() + begin, end - begin);
        end -= begin;
        begin = 0;
    }
    if (end + padding == buffer.size()) {
        if (end > maximumLineLength) {
            throw InputError(fmt::format("{}:{}: line is longer than {} MiB", shownName, number + 1,
                                         maximumLineLength >> 20));
        }
        // One more byte tells a line of the greatest length from a longer one.
        buffer.resize(std::min(2 * end, maximumLineLength + 1) + padding);
    }
    ssize_t count = 0;
    do {
        waitForInput();
        count = ::read(descriptor, buffer.data() + end, buffer.size() - padding - end);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count < 0) {
        throw InputError(fmt::format("{}: {}", shownName, std::strerror(errno)));
    }
    end += static_cast<std::size_t>(count);
    return count > 0;
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = begin;
    for (;;) {
        const void* found = std::memchr(buffer.data() + searched, '\n', end - searched);
        if (found != nullptr) {
            const auto position =
                static_cast<std::size_t>(static_cast<const char*>(found) - buffer.data());
            line = std::string_view(buffer.data() + begin, position - begin);
            consumed += position + 1 - begin;
            begin = position + 1;
            ++number;
            return true;
        }
        const std::size_t unfinished = end - begin;
        if (atEnd || !fill()) {
            atEnd = true;
            if (unfinished == 0) {
                return false;
            }
            line = std::string_view(buffer.data() + begin, unfinished);
            consumed += unfinished;
            begin = end;
            openEnded = true;
            ++number;
            return true;
        }
        searched = begin + unfinished;
    }
}

double LineReader::fractionRead() const {
    return total == 0 ? -1.0 : static_cast<double>(consumed) / static_cast<double>(total);
}

std::string LineReader::place() const {
    return fmt::format("{}:{}", shownName, number);
}

}  // namespace Workbench
