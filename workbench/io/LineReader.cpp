// SPDX-License-Identifier: Apache-2.0
#include "io/LineReader.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/FileError.h"
#include "io/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {

LineReader::LineReader(const std::string& path) : shownName_(path == "-" ? "<stdin>" : path) {
    descriptor_ = path == "-" ? ::dup(STDIN_FILENO) : openFile(path, O_RDONLY);
    if (descriptor_ < 0) {
        throw FileError(shownName_, errno);
    }
    stopDescriptor_ = ::eventfd(0, EFD_CLOEXEC);
    if (stopDescriptor_ < 0) {
        const int fault = errno;
        ::close(descriptor_);
        throw FileError(shownName_, fault);
    }
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        total_ = static_cast<std::uint64_t>(status.st_size);
    }
    buffer_.resize((std::size_t{256} << 10) + padding);
}

LineReader::~LineReader() {
    ::close(descriptor_);
    ::close(stopDescriptor_);
}

void LineReader::stop() {
    const std::uint64_t one = 1;
    static_cast<void>(::write(stopDescriptor_, &one, sizeof one));
}

void LineReader::waitForInput() const {
    if (waitFor({{descriptor_, POLLIN, 0}, {stopDescriptor_, POLLIN, 0}})[1].revents != 0) {
        throw InputError(shownName_, InputError("reading was stopped"));
    }
}

bool LineReader::fill() {
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ + padding == buffer_.size()) {
        if (end_ > maximumLineLength) {
            throw InputError(
                fmt::format("{}:{}", shownName_, number_ + 1),
                InputError(fmt::format("line is longer than {} MiB", maximumLineLength >> 20)));
        }
        // One byte more than the maximum, to detect longer lines.
        buffer_.resize(std::min(2 * end_, maximumLineLength + 1) + padding);
    }
    const std::size_t count = decoder_ ? readCompressed() : readPlain();
    end_ += count;
    return count > 0;
}

std::size_t LineReader::read(char* to, std::size_t room) {
    ssize_t count = 0;
    do {
        waitForInput();
        count = ::read(descriptor_, to, room);
    } while (count < 0 && (errno == EINTR || errno == EAGAIN));
    if (count < 0) {
        throw FileError(shownName_, errno);
    }
    return static_cast<std::size_t>(count);
}

std::size_t LineReader::readPlain() {
    char* const to = buffer_.data() + end_;
    std::size_t count = read(to, buffer_.size() - padding - end_);
    if (!std::exchange(isBeginning_, false)) {
        return count;
    }
    // No text that is read here begins like compressed data: waiting for all of their mark keeps
    // nobody waiting.
    const auto mayBeCompressed = [&] { return *to == '\x1f' || *to == '\x28'; };
    for (std::size_t more = count; more > 0 && count < 4 && mayBeCompressed(); count += more) {
        more = read(to + count, buffer_.size() - padding - end_ - count);
    }
    decoder_ = decoderOf({to, count});
    if (!decoder_) {
        return count;
    }
    compressed_.assign(buffer_.size(), '\0');
    std::memcpy(compressed_.data(), to, count);
    compressedEnd_ = count;
    return readCompressed();
}

std::size_t LineReader::readCompressed() {
    for (;;) {
        Decoder::Step step;
        try {
            step = decoder_->decode(
                {compressed_.data() + compressedBegin_, compressedEnd_ - compressedBegin_},
                buffer_.data() + end_, buffer_.size() - padding - end_);
        } catch (const InputError& error) {
            throw InputError(fmt::format("{}:{}", shownName_, number_ + 1), error);
        }
        compressedBegin_ += step.taken;
        decoded_ += step.taken;
        if (step.written > 0) {
            return step.written;
        }
        if (step.taken > 0) {
            continue;
        }
        const std::size_t rest = compressedEnd_ - compressedBegin_;
        std::memmove(compressed_.data(), compressed_.data() + compressedBegin_, rest);
        compressedBegin_ = 0;
        const std::size_t count = read(compressed_.data() + rest, compressed_.size() - rest);
        compressedEnd_ = rest + count;
        if (count == 0) {
            if (!decoder_->isAtEnd()) {
                throw InputError(fmt::format("{}:{}", shownName_, number_ + 1),
                                 InputError("the compressed data end too early"));
            }
            return 0;
        }
    }
}

bool LineReader::next(std::string_view& line) {
    std::size_t searched = begin_;
    for (;;) {
        const void* found = std::memchr(buffer_.data() + searched, '\n', end_ - searched);
        if (found != nullptr) {
            const auto position =
                static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
            line = std::string_view(buffer_.data() + begin_, position - begin_);
            consumed_ += position + 1 - begin_;
            begin_ = position + 1;
            ++number_;
            return true;
        }
        const std::size_t unfinished = end_ - begin_;
        if (atEnd_ || !fill()) {
            atEnd_ = true;
            if (unfinished == 0) {
                return false;
            }
            line = std::string_view(buffer_.data() + begin_, unfinished);
            consumed_ += unfinished;
            begin_ = end_;
            openEnded_ = true;
            ++number_;
            return true;
        }
        searched = begin_ + unfinished;
    }
}

double LineReader::fractionRead() const {
    const std::uint64_t done = decoder_ ? decoded_ : consumed_;
    return total_ == 0 ? -1.0 : static_cast<double>(done) / static_cast<double>(total_);
}

std::string LineReader::place() const {
    return fmt::format("{}:{}", shownName_, number_);
}

}  // namespace Workbench
