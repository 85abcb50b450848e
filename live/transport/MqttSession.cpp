// SPDX-License-Identifier: Apache-2.0
#include "live/transport/MqttSession.h"

#include <veskar-host/InputError.h>

#include "live/transport/Credentials.h"
#include "live/transport/Descriptor.h"
#include "live/transport/Message.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>
#include <utility>

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Veskar::Live {
namespace {

using Host::InputError;

/// Once per process; it is never cleaned up, since sessions may come any time.
void initialiseLibrary() {
    static const int result = mosquitto_lib_init();
    if (result != MOSQ_ERR_SUCCESS) {
        throw InputError("libmosquitto cannot be initialised");
    }
}

/// @throw InputError when the library refuses an option
void apply(int result, const char* option) {
    if (result != MOSQ_ERR_SUCCESS) {
        throw InputError(std::string(option) + ": " + mosquitto_strerror(result));
    }
}

const char* orNone(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

/// Without it, OpenSSL asks the terminal for the passphrase of a key, and waits.
int refusePassphrase(char*, int, int, void*) {
    return 0;
}

/// @return whether a publication failed because there is no connection any more
bool isConnectionFault(int result) {
    return result == MOSQ_ERR_NO_CONN || result == MOSQ_ERR_CONN_LOST || result == MOSQ_ERR_ERRNO ||
           result == MOSQ_ERR_TLS;
}

/// Brokers may hold a short message back until the one before it is acknowledged (Nagle's
/// algorithm), which the system delays by 40 ms. It forgets this request soon.
void acknowledgeAtOnce(int socket) {
    const int yes = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_QUICKACK, &yes, sizeof yes);
}

constexpr int firstRefusal = 128;  ///< of the protocol's reason codes

}  // namespace

void MqttSession::Destroy::operator()(mosquitto* client) const noexcept {
    mosquitto_destroy(client);
}

/// The library's callbacks. They only take notes, but for messages, whose bytes do not last.
struct MqttSession::Library {
    template <typename Body>
    static void run(void* data, Body body) noexcept {
        auto& session = *static_cast<MqttSession*>(data);
        session.thrown_.hold([&] { body(session); });
    }

    static void onConnect(mosquitto*, void* data, int code, int,
                          const mosquitto_property* properties) {
        run(data, [&](MqttSession& session) {
            if (code == 0) {
                session.isAccepted_ = true;
                std::uint8_t isAvailable = 1;
                mosquitto_property_read_byte(properties, MQTT_PROP_SUBSCRIPTION_ID_AVAILABLE,
                                             &isAvailable, false);
                session.hasIdentifiers_ = session.isVersion5_ && isAvailable != 0;
                return;
            }
            const bool isForVersion = code == MQTT_RC_UNSUPPORTED_PROTOCOL_VERSION ||
                                      code == CONNACK_REFUSED_PROTOCOL_VERSION;
            std::string reason = code < firstRefusal ? mosquitto_connack_string(code)
                                                     : mosquitto_reason_string(code);
            session.end(isForVersion ? End::OtherProtocol : End::Refused, reason);
        });
    }

    static void onDisconnect(mosquitto*, void* data, int code, const mosquitto_property*) {
        const int fault = errno;
        run(data, [&](MqttSession& session) {
            const std::string reason = code >= firstRefusal ? mosquitto_reason_string(code)
                                                            : session.reasonOf(code, fault);
            const bool hasHungUp = code == MOSQ_ERR_CONN_LOST && session.log_.empty();
            session.end(session.isAccepted_ ? End::Lost
                        : hasHungUp         ? End::HungUp
                                            : End::Failed,
                        reason);
        });
    }

    static void onMessage(mosquitto*, void* data, const mosquitto_message* message,
                          const mosquitto_property* properties) {
        run(data, [&](MqttSession& session) {
            MqttArrival arrival{message->topic,
                                {static_cast<const char*>(message->payload),
                                 static_cast<std::size_t>(message->payloadlen)},
                                message->retain,
                                {}};
            std::uint32_t identifier = 0;
            while ((properties = mosquitto_property_read_varint(
                        properties, MQTT_PROP_SUBSCRIPTION_IDENTIFIER, &identifier,
                        !arrival.identifiers.empty())) != nullptr) {
                arrival.identifiers.push_back(identifier);
            }
            session.events_.message(arrival);
        });
    }

    static void onPublish(mosquitto*, void* data, int number, int code, const mosquitto_property*) {
        run(data, [&](MqttSession& session) {
            Progress progress;
            progress.number = number;
            progress.kind = code < firstRefusal ? Progress::Done : Progress::Refused;
            progress.reason = code < firstRefusal ? "" : mosquitto_reason_string(code);
            session.progress_.push_back(std::move(progress));
        });
    }

    static void onSubscribe(mosquitto*, void* data, int number, int count, const int* granted,
                            const mosquitto_property*) {
        run(data, [&](MqttSession& session) {
            const bool isGranted = count > 0 && granted[0] < firstRefusal;
            session.events_.subscribed(
                number, isGranted ? "" : mosquitto_reason_string(count > 0 ? granted[0] : 0));
        });
    }

    static void onLog(mosquitto*, void* data, int level, const char* text) {
        if (level == MOSQ_LOG_ERR) {
            run(data, [&](MqttSession& session) {
                constexpr std::size_t enough = 500;
                if (session.log_.size() < enough) {
                    session.log_ += (session.log_.empty() ? "" : "; ") + std::string(text);
                }
            });
        }
    }
};

MqttSession::MqttSession(EventLoop& loop, const MqttOptions& options, bool isVersion5,
                         Events events)
    : options_(options),
      isVersion5_(isVersion5),
      events_(std::move(events)),
      patience_(loop.timer([this] {
          end(End::Failed,
              "no answer within " + std::to_string(options_.answerWithin.count()) + " s");
      })),
      upkeep_(loop.timer([this] { keepAlive(); })),
      tellEnd_(loop.deferral([this] {
          const auto told = events_.ended;
          const End last = end_;
          told(last);
      })) {
    initialiseLibrary();
    client_.reset(mosquitto_new(orNone(options.clientId), true, this));
    if (!client_) {
        throw std::bad_alloc();
    }
    configure();
    patience_.expireAfter(options.answerWithin);
    connect();
    if (!hasEnded_) {
        upkeep_.expireAfter(std::chrono::seconds(1));
        watch_ = loop.watch(mosquitto_socket(client_.get()), EPOLLIN | EPOLLOUT,
                            [this](std::uint32_t occurred) { ready(occurred); });
    }
}

MqttSession::~MqttSession() = default;

void MqttSession::check(const MqttOptions& options) {
    if (!options.credentials.empty()) {
        Credentials::read(options.credentials);
    }
    if (!options.tls) {
        return;
    }
    const MqttTls& tls = *options.tls;
    for (const std::string& path : {tls.authorities, tls.certificate}) {
        if (std::error_code fault; !path.empty() && !std::filesystem::exists(path, fault)) {
            throw InputError(path, InputError(fault ? fault.message() : textOf(ENOENT)));
        }
    }
    if (tls.certificate.empty() != tls.key.empty()) {
        throw InputError("a client's certificate needs a key, and a key a certificate");
    }
    if (!tls.key.empty()) {
        checkSecret(tls.key);
    }
}

void MqttSession::configure() {
    mosquitto* client = client_.get();
    mosquitto_connect_v5_callback_set(client, Library::onConnect);
    mosquitto_disconnect_v5_callback_set(client, Library::onDisconnect);
    mosquitto_message_v5_callback_set(client, Library::onMessage);
    mosquitto_publish_v5_callback_set(client, Library::onPublish);
    mosquitto_subscribe_v5_callback_set(client, Library::onSubscribe);
    mosquitto_log_callback_set(client, Library::onLog);
    apply(mosquitto_int_option(client, MOSQ_OPT_PROTOCOL_VERSION,
                               isVersion5_ ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311),
          "protocol");
    apply(mosquitto_int_option(client, MOSQ_OPT_TCP_NODELAY, 1), "TCP_NODELAY");
    check(options_);
    if (!options_.credentials.empty()) {
        const Credentials credentials = Credentials::read(options_.credentials);
        apply(mosquitto_username_pw_set(client, credentials.user.c_str(),
                                        credentials.password.c_str()),
              "user and password");
    }
    if (options_.tls) {
        encrypt(*options_.tls);
    }
    if (options_.availability) {
        const MqttAvailability& availability = *options_.availability;
        apply(mosquitto_will_set(client, availability.topic.c_str(),
                                 static_cast<int>(availability.offline.size()),
                                 availability.offline.data(), 1, true),
              "last will");
    }
}

void MqttSession::encrypt(const MqttTls& tls) {
    const bool isDirectory = std::filesystem::is_directory(tls.authorities);
    const std::string key = secretPath(tls.key);
    apply(mosquitto_tls_set(client_.get(), isDirectory ? nullptr : tls.authorities.c_str(),
                            isDirectory ? tls.authorities.c_str() : nullptr,
                            orNone(tls.certificate), orNone(key), refusePassphrase),
          "TLS");
}

void MqttSession::connect() {
    mosquitto* client = client_.get();
    const auto keepAlive = static_cast<int>(options_.keepAlive.count());
    if (isVersion5_) {
        // The broker keeps far longer messages to itself; those that are a bit too long are to be
        // counted. Only the connection that waits takes properties: it refuses the port behind
        // them.
        mosquitto_property* properties = nullptr;
        mosquitto_property_add_int32(&properties, MQTT_PROP_MAXIMUM_PACKET_SIZE,
                                     static_cast<std::uint32_t>(2 * longestMessage));
        mosquitto_connect_bind_v5(client, options_.host.c_str(), -1, keepAlive, nullptr,
                                  properties);
        mosquitto_property_free_all(&properties);
    }
    const int result =
        mosquitto_connect_async(client, options_.host.c_str(), options_.port, keepAlive);
    if (result != MOSQ_ERR_SUCCESS) {
        end(End::Failed, reasonOf(result, errno));
    }
}

std::string MqttSession::reasonOf(int result, int fault) const {
    if (!log_.empty()) {
        return log_;
    }
    if (options_.tls && result == MOSQ_ERR_ERRNO && fault == EPROTO) {
        return "TLS failed; the broker may ask for a certificate of its clients";
    }
    return result == MOSQ_ERR_ERRNO ? textOf(fault) : mosquitto_strerror(result);
}

void MqttSession::ready(std::uint32_t events) {
    mosquitto* client = client_.get();
    isInLibrary_ = true;
    int result = MOSQ_ERR_SUCCESS;
    int fault = 0;
    if ((events & ~std::uint32_t{EPOLLOUT}) != 0) {
        result = mosquitto_loop_read(client, 1);
        fault = errno;
        acknowledgeAtOnce(mosquitto_socket(client));
    }
    if (result == MOSQ_ERR_SUCCESS && !hasEnded_ && ((events & EPOLLOUT) != 0 || isHandshaking_)) {
        result = mosquitto_loop_write(client, 1);
        fault = errno;
        isHandshaking_ = options_.tls && !isAccepted_;
    }
    isInLibrary_ = false;
    settle(result, fault);
}

void MqttSession::keepAlive() {
    isInLibrary_ = true;
    const int result = mosquitto_loop_misc(client_.get());
    const int fault = errno;
    isInLibrary_ = false;
    settle(result, fault);
    if (!hasEnded_) {
        upkeep_.expireAfter(std::chrono::seconds(1));
    }
}

/// Behind each turn of the library: tells what it has noted, and what it waits for.
void MqttSession::settle(int result, int fault) {
    if (result != MOSQ_ERR_SUCCESS) {
        end(isAccepted_ ? End::Lost : End::Failed, reasonOf(result, fault));
    }
    for (const Progress& progress : std::exchange(progress_, {})) {
        events_.published(progress);
    }
    if (isAccepted_ && !isAcceptanceTold_ && !hasEnded_) {
        isAcceptanceTold_ = true;
        patience_.disarm();
        events_.accepted();
    }
    if (canPublish()) {
        events_.writable();
    }
    if (watch_) {
        // While TLS waits for the broker's part of the handshake, the socket can be written all the
        // time, but nothing can be.
        const bool wantsWrite = mosquitto_want_write(client_.get()) && !isHandshaking_;
        watch_.setEvents(EPOLLIN | (wantsWrite ? std::uint32_t{EPOLLOUT} : 0U));
    }
    thrown_.release();
}

void MqttSession::end(End::Kind kind, const std::string& reason) {
    if (!std::exchange(hasEnded_, true)) {
        end_ = {kind, reason};
        // Before the library closes the socket, and another one gets its number.
        watch_ = {};
        upkeep_.disarm();
        patience_.disarm();
        tellEnd_.request();
    }
}

bool MqttSession::canPublish() const {
    return isAcceptanceTold_ && !hasEnded_ && !isInLibrary_ && !mosquitto_want_write(client_.get());
}

MqttSession::Progress MqttSession::publish(const MqttPublication& publication) {
    Progress progress;
    isInLibrary_ = true;
    const int result = mosquitto_publish_v5(
        client_.get(), &progress.number, publication.topic.c_str(),
        static_cast<int>(publication.payload.size()), publication.payload.data(), publication.qos,
        publication.isRetained, nullptr);
    const int fault = errno;
    isInLibrary_ = false;
    if (isConnectionFault(result)) {
        end(End::Lost, reasonOf(result, fault));
        progress.kind = Progress::Disconnected;
        return progress;
    }
    if (result != MOSQ_ERR_SUCCESS) {
        progress.kind = Progress::Refused;
        progress.reason = mosquitto_strerror(result);
        return progress;
    }
    const auto done = std::find_if(progress_.begin(), progress_.end(), [&](const Progress& told) {
        return told.number == progress.number;
    });
    if (done != progress_.end()) {
        progress = *done;
        progress_.erase(done);
    }
    if (watch_ && mosquitto_want_write(client_.get())) {
        watch_.setEvents(EPOLLIN | EPOLLOUT);
    }
    return progress;
}

int MqttSession::subscribe(const std::string& filter, int qos, std::uint32_t identifier) {
    mosquitto_property* properties = nullptr;
    if (hasIdentifiers_) {
        mosquitto_property_add_varint(&properties, MQTT_PROP_SUBSCRIPTION_IDENTIFIER, identifier);
    }
    int number = 0;
    isInLibrary_ = true;
    const int result =
        mosquitto_subscribe_v5(client_.get(), &number, filter.c_str(), qos, 0, properties);
    const int fault = errno;
    isInLibrary_ = false;
    mosquitto_property_free_all(&properties);
    if (isConnectionFault(result)) {
        end(End::Lost, reasonOf(result, fault));
    } else if (watch_) {
        watch_.setEvents(EPOLLIN | EPOLLOUT);
    }
    return number;
}

void MqttSession::unsubscribe(const std::string& filter) {
    mosquitto_unsubscribe(client_.get(), nullptr, filter.c_str());
    if (watch_) {
        watch_.setEvents(EPOLLIN | EPOLLOUT);
    }
}

void MqttSession::disconnect() {
    watch_ = {};
    hasEnded_ = true;
    mosquitto_disconnect(client_.get());
}

}  // namespace Veskar::Live
