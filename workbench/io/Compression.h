// SPDX-License-Identifier: Apache-2.0
// Compressed files: gzip (RFC 1952) and Zstandard (RFC 8878).
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Workbench {

/// Undoes a compression, piece by piece and in constant memory. Compressed data that follow each
/// other, as `cat` makes them, are one text.
class Decoder {
public:
    /// What a step did.
    struct Step {
        std::size_t taken = 0;    ///< compressed bytes
        std::size_t written = 0;  ///< bytes of the text
    };

    virtual ~Decoder() = default;
    /// @param compressed what is left of a piece
    /// @param out receives text
    /// @param room for so many bytes
    /// @return what was done; nothing at all when it needs more compressed bytes
    /// @throw InputError when the data are damaged
    virtual Step decode(std::string_view compressed, char* out, std::size_t room) = 0;
    /// @return whether the compressed data may end here
    virtual bool isAtEnd() const = 0;
};

/// @param beginning the first bytes of a file, at least four if it has as many
/// @return the decoder for it; nothing: it is not compressed
std::unique_ptr<Decoder> decoderOf(std::string_view beginning);

/// Compresses piece by piece.
class Encoder {
public:
    /// How far the compressed text must reach.
    enum class Until {
        Convenient,  ///< the encoder may keep something back
        Now,         ///< a reader gets all text up to here
        End          ///< no text follows
    };

    virtual ~Encoder() = default;
    /// @param text the next piece
    /// @param until see there
    /// @return compressed bytes, maybe none
    virtual std::string encode(std::string_view text, Until until) = 0;
};

/// @param path name of a file
/// @return the encoder that it asks for: names ending in ".gz" and ".zst"; nothing for others
std::unique_ptr<Encoder> encoderFor(const std::string& path);

}  // namespace Workbench
