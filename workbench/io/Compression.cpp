// SPDX-License-Identifier: Apache-2.0
#include "io/Compression.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <array>
#include <limits>
#include <new>

#include <zlib.h>
#include <zstd.h>

namespace Workbench {
namespace {

constexpr std::string_view gzipMark("\x1f\x8b", 2);
constexpr std::string_view zstdMark("\x28\xb5\x2f\xfd", 4);
/// zlib's numbers for a gzip header around the data, with the largest window.
constexpr int gzipWindow = 15 + 16;
constexpr std::size_t pieceSize = std::size_t{64} << 10;

/// zlib counts bytes in unsigned int.
uInt limited(std::size_t size) {
    constexpr std::size_t most = std::numeric_limits<uInt>::max();
    return static_cast<uInt>(size < most ? size : most);
}

/// zlib reads through a pointer to what is not const.
Bytef* bytesOf(std::string_view text) {
    return reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
}

class GzipDecoder : public Decoder {
public:
    GzipDecoder() {
        if (::inflateInit2(&stream_, gzipWindow) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GzipDecoder() override { ::inflateEnd(&stream_); }
    GzipDecoder(const GzipDecoder&) = delete;
    GzipDecoder& operator=(const GzipDecoder&) = delete;

    Step decode(std::string_view compressed, char* out, std::size_t room) override {
        if (isAtEnd_ && !compressed.empty()) {
            ::inflateReset(&stream_);
            isAtEnd_ = false;
        }
        stream_.next_in = bytesOf(compressed);
        stream_.avail_in = limited(compressed.size());
        stream_.next_out = reinterpret_cast<Bytef*>(out);
        stream_.avail_out = limited(room);
        const uInt in = stream_.avail_in;
        const uInt free = stream_.avail_out;
        const int result = ::inflate(&stream_, Z_NO_FLUSH);
        isAtEnd_ = result == Z_STREAM_END;
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
            throw InputError("the gzip data are damaged");
        }
        return {in - stream_.avail_in, free - stream_.avail_out};
    }
    bool isAtEnd() const override { return isAtEnd_; }

private:
    z_stream stream_{};
    bool isAtEnd_ = false;
};

class ZstdDecoder : public Decoder {
public:
    Step decode(std::string_view compressed, char* out, std::size_t room) override {
        ZSTD_inBuffer in{compressed.data(), compressed.size(), 0};
        ZSTD_outBuffer written{out, room, 0};
        const std::size_t result = ZSTD_decompressStream(context_.get(), &written, &in);
        if (ZSTD_isError(result) != 0U) {
            throw InputError(std::string("the Zstandard data are damaged: ") +
                             ZSTD_getErrorName(result));
        }
        if (in.pos > 0 || written.pos > 0) {
            isAtEnd_ = result == 0;
        }
        return {in.pos, written.pos};
    }
    bool isAtEnd() const override { return isAtEnd_; }

private:
    std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context_{ZSTD_createDCtx(),
                                                                  &ZSTD_freeDCtx};
    bool isAtEnd_ = false;
};

class GzipEncoder : public Encoder {
public:
    GzipEncoder() {
        constexpr int memoryLevel = 8;
        if (::deflateInit2(&stream_, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipWindow, memoryLevel,
                           Z_DEFAULT_STRATEGY) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~GzipEncoder() override { ::deflateEnd(&stream_); }
    GzipEncoder(const GzipEncoder&) = delete;
    GzipEncoder& operator=(const GzipEncoder&) = delete;

    std::string encode(std::string_view text, Until until) override {
        const int flush = until == Until::End   ? Z_FINISH
                          : until == Until::Now ? Z_SYNC_FLUSH
                                                : Z_NO_FLUSH;
        std::string compressed;
        stream_.next_in = bytesOf(text);
        stream_.avail_in = limited(text.size());
        do {
            stream_.next_out = piece_.data();
            stream_.avail_out = static_cast<uInt>(piece_.size());
            ::deflate(&stream_, flush);
            compressed.append(reinterpret_cast<const char*>(piece_.data()),
                              piece_.size() - stream_.avail_out);
        } while (stream_.avail_out == 0);
        return compressed;
    }

private:
    z_stream stream_{};
    std::array<Bytef, pieceSize> piece_{};
};

class ZstdEncoder : public Encoder {
public:
    ZstdEncoder() { ZSTD_CCtx_setParameter(context_.get(), ZSTD_c_checksumFlag, 1); }

    std::string encode(std::string_view text, Until until) override {
        const ZSTD_EndDirective directive = until == Until::End   ? ZSTD_e_end
                                            : until == Until::Now ? ZSTD_e_flush
                                                                  : ZSTD_e_continue;
        std::string compressed;
        ZSTD_inBuffer in{text.data(), text.size(), 0};
        std::size_t left = 0;
        do {
            ZSTD_outBuffer out{piece_.data(), piece_.size(), 0};
            left = ZSTD_compressStream2(context_.get(), &out, &in, directive);
            if (ZSTD_isError(left) != 0U) {
                throw std::bad_alloc();
            }
            compressed.append(piece_.data(), out.pos);
        } while (until == Until::Convenient ? in.pos < in.size : left > 0);
        return compressed;
    }

private:
    std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context_{ZSTD_createCCtx(),
                                                                  &ZSTD_freeCCtx};
    std::array<char, pieceSize> piece_{};
};

bool endsWith(const std::string& text, std::string_view end) {
    return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::unique_ptr<Decoder> decoderOf(std::string_view beginning) {
    if (beginning.substr(0, gzipMark.size()) == gzipMark) {
        return std::make_unique<GzipDecoder>();
    }
    if (beginning.substr(0, zstdMark.size()) == zstdMark) {
        return std::make_unique<ZstdDecoder>();
    }
    return nullptr;
}

std::unique_ptr<Encoder> encoderFor(const std::string& path) {
    if (endsWith(path, ".gz")) {
        return std::make_unique<GzipEncoder>();
    }
    if (endsWith(path, ".zst")) {
        return std::make_unique<ZstdEncoder>();
    }
    return nullptr;
}

}  // namespace Workbench
