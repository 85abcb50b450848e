// SPDX-License-Identifier: Apache-2.0
// A digest for comparing texts.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct XXH3_state_s;

namespace Workbench {

/// XXH3 with 128 bits and seed 0, over text added in pieces. It detects confused files; it is not
/// cryptographic and does not resist deliberate collisions.
class Digest {
public:
    Digest();

    /// @param piece continues the previous pieces
    void add(std::string_view piece);
    /// @return the digest of all pieces, 32 hexadecimal digits as `xxhsum -H2` prints them
    std::string text() const;

private:
    struct Deleter {
        void operator()(XXH3_state_s* given) const;
    };

    std::unique_ptr<XXH3_state_s, Deleter> state_;
};

}  // namespace Workbench
