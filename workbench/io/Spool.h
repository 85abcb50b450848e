// SPDX-License-Identifier: Apache-2.0
// Temporary storage for more values than memory should hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace Workbench {

/// Lists of plain values that are read again in the order in which they were written. What exceeds
/// `memoryLimit` is in a file of the directory for temporary files ($TMPDIR or /tmp), which has no
/// name and disappears with this object or the process.
class Spool {
public:
    Spool() = default;
    ~Spool();
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    /// @param values appended as one list
    /// @throw InputError when the file cannot be created or written
    template <typename Value>
    void write(const std::vector<Value>& values) {
        static_assert(std::is_trivially_copyable_v<Value>);
        const std::uint64_t count = values.size();
        append(&count, sizeof count);
        append(values.data(), values.size() * sizeof(Value));
    }

    /// Lets reading begin with the first list. Writing goes on behind the last one.
    void rewind();
    /// @return the next list; there must be one, of the same type
    /// @throw InputError when the file cannot be read
    template <typename Value>
    std::vector<Value> read() {
        std::uint64_t count = 0;
        take(&count, sizeof count);
        std::vector<Value> values(static_cast<std::size_t>(count));
        take(values.data(), values.size() * sizeof(Value));
        return values;
    }

    static constexpr std::size_t memoryLimit = std::size_t{1} << 20;

private:
    void append(const void* bytes, std::size_t count);
    void take(void* bytes, std::size_t count);
    void writeOut();
    void readIn();
    void create();
    [[noreturn]] void fail(const char* doing) const;

    std::string path_;            ///< where the file was created
    int descriptor_ = -1;         ///< no file yet
    std::uint64_t inFile_ = 0;    ///< bytes
    std::vector<char> written_;   ///< behind those in the file
    std::uint64_t position_ = 0;  ///< in the file, behind `reading_`
    std::vector<char> reading_;   ///< a part of the file
    std::size_t next_ = 0;        ///< of `reading_`; behind the file of `written_`
};

}  // namespace Workbench
