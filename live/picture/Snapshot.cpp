// SPDX-License-Identifier: Apache-2.0
#include "live/picture/Snapshot.h"

#include <veskar-host/InputError.h>

#include "live/transport/Credentials.h"

#include <string_view>
#include <utility>

#include <curl/curl.h>

namespace Veskar::Live {
namespace {

constexpr long longestConnecting = 3000;  // ms
constexpr long longestAnswer = 5000;      // ms

struct EndTransfer {
    void operator()(CURL* transfer) const noexcept { ::curl_easy_cleanup(transfer); }
};

/// The library's global state, made before the first transfer.
void prepareLibrary() {
    static const CURLcode made = ::curl_global_init(CURL_GLOBAL_DEFAULT);
    if (made != CURLE_OK) {
        throw Host::InputError(::curl_easy_strerror(made));
    }
}

class Snapshot : public PictureSource {
public:
    Snapshot(const std::string& url, const std::string& credentials) {
        prepareLibrary();
        transfer_.reset(::curl_easy_init());
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https,file");
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_CONNECTTIMEOUT_MS, longestConnecting);
        set(CURLOPT_TIMEOUT_MS, longestAnswer);
        set(CURLOPT_FILETIME, 1L);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &Snapshot::isUseless);
        set(CURLOPT_WRITEFUNCTION, &Snapshot::take);
        set(CURLOPT_WRITEDATA, this);
        if (!credentials.empty()) {
            const Credentials read = Credentials::read(credentials);
            set(CURLOPT_USERNAME, read.user.c_str());
            set(CURLOPT_PASSWORD, read.password.c_str());
            set(CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC | CURLAUTH_DIGEST));
        }
    }

    std::optional<Picture> next(const std::atomic<bool>& isEnding) override {
        set(CURLOPT_XFERINFODATA, const_cast<std::atomic<bool>*>(&isEnding));  // NOLINT
        picture_ = {{}, steadyTimeOf(std::chrono::system_clock::now())};
        const CURLcode end = ::curl_easy_perform(transfer_.get());
        if (picture_.bytes.size() > Picture::mostBytes) {
            throw Host::InputError("the camera's picture is larger than 8 MiB");
        }
        if (end != CURLE_OK) {
            throw Host::InputError(std::string("the camera gives no picture: ") +
                                   ::curl_easy_strerror(end));
        }
        checkStatus();
        if (mediaTypeOf(picture_.bytes) == nullptr) {
            throw Host::InputError("what the camera gives is neither JPEG nor PNG");
        }
        return std::move(picture_);
    }

private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        if (const CURLcode set = ::curl_easy_setopt(transfer_.get(), option, value);
            set != CURLE_OK) {
            throw Host::InputError(::curl_easy_strerror(set));
        }
    }

    /// A file has no status, but a time on this machine's clock; that of a camera's clock is not
    /// believed.
    void checkStatus() {
        constexpr long granted = 200;
        long status = 0;
        ::curl_easy_getinfo(transfer_.get(), CURLINFO_RESPONSE_CODE, &status);
        if (status != 0 && status != granted) {
            throw Host::InputError("the camera answers " + std::to_string(status));
        }
        curl_off_t changed = -1;
        ::curl_easy_getinfo(transfer_.get(), CURLINFO_FILETIME_T, &changed);
        if (status == 0 && changed >= 0) {
            picture_.time = steadyTimeOf(std::chrono::system_clock::from_time_t(changed));
        }
    }

    static int isUseless(void* isEnding, curl_off_t /*most*/, curl_off_t /*got*/,
                         curl_off_t /*mostSent*/, curl_off_t /*sent*/) {
        return *static_cast<const std::atomic<bool>*>(isEnding) ? 1 : 0;
    }

    /// Ends the transfer of what is too large.
    static std::size_t take(char* piece, std::size_t /*one*/, std::size_t size, void* self) {
        std::string& bytes = static_cast<Snapshot*>(self)->picture_.bytes;
        bytes.append(piece, size);
        return bytes.size() > Picture::mostBytes ? 0 : size;
    }

    std::unique_ptr<CURL, EndTransfer> transfer_;
    Picture picture_;
};

}  // namespace

std::string snapshotMissing() {
    return {};
}

std::unique_ptr<PictureSource> makeSnapshot(const std::string& url,
                                            const std::string& credentials) {
    return std::make_unique<Snapshot>(url, credentials);
}

}  // namespace Veskar::Live
