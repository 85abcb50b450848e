// SPDX-License-Identifier: Apache-2.0
#include "io/Digest.h"

#include <new>

#include <fmt/format.h>
#include <xxhash.h>

namespace Workbench {

Digest::Digest() : state_(XXH3_createState()) {
    if (!state_ || XXH3_128bits_reset(state_.get()) != XXH_OK) {
        throw std::bad_alloc();
    }
}

void Digest::Deleter::operator()(XXH3_state_s* given) const {
    XXH3_freeState(given);
}

void Digest::add(std::string_view piece) {
    // It fails only without a state.
    static_cast<void>(XXH3_128bits_update(state_.get(), piece.data(), piece.size()));
}

std::string Digest::text() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(state_.get());
    return fmt::format("{:016x}{:016x}", hash.high64, hash.low64);
}

}  // namespace Workbench
