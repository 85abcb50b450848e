// SPDX-License-Identifier: Apache-2.0
#include <veskar/RadarStatus.h>

#include "dbus/PropertyClient.h"
#include "dbus/SdBus.h"

#include <cerrno>
#include <cstdlib>
#include <optional>

#include <syslog.h>

namespace {

constexpr Impl::PropertyClient::Service service{"com.nolt.Radar1", "/com/nolt/Radar1"};

/// The most names that are kept: a radar has a few, and one that invents new ones without end must
/// not fill the memory.
constexpr std::size_t mostFailures = 1000;

/// Enters a property's variant. A radar that publishes another type breaks the contract, and going
/// on with a misread radar is worse than stopping.
void enterContracted(sd_bus_message* message, const char* contents) {
    if (Veskar::SdBus::enter(message, SD_BUS_TYPE_VARIANT, contents) < 0) {
        std::abort();
    }
}

int readFailureStatus(sd_bus_message* message, std::pair<int, bool>& status) {
    int value = 0;
    int present = 0;
    int r = Veskar::SdBus::enter(message, SD_BUS_TYPE_VARIANT, "(ib)");
    if (r >= 0) {
        r = sd_bus_message_read(message, "(ib)", &value, &present);
    }
    if (r < 0) {
        syslog(LOG_ERR, "RadarStatus: Failed to read failure status value. Error code: %d\n", r);
        return r;
    }
    status = {value, present != 0};
    return sd_bus_message_exit_container(message);
}

}  // namespace

namespace Impl {

RadarStatus::RadarStatus() : client_(std::make_unique<PropertyClient>(service)) {
    client_->setUp([this] {
        PropertyClient::requireSettings(requestStatus());
        client_->follow([this](sd_bus_message* message) {
            const int r = client_->readInterface(message);
            if (r < 0) {
                syslog(LOG_ERR, "RadarStatus: Failed to get property interface. Error code: %d\n",
                       r);
            }
            return r > 0 ? parseProperties(message) : r;
        });
    });
}

RadarStatus::~RadarStatus() = default;

RadarStatus& RadarStatus::instance() {
    static RadarStatus radarStatus;
    return radarStatus;
}

bool RadarStatus::initStatus() {
    return requestStatus() >= 0;
}

int RadarStatus::requestStatus() {
    Veskar::SdBus::Error error;
    Veskar::SdBus::Message reply;
    const std::optional<int> asked = client_->getAll(error, reply);
    if (!asked) {
        return -ETIMEDOUT;
    }
    if (*asked < 0) {
        syslog(LOG_ERR, "RadarStatus: get property error: %s\n", error.message());
        return *asked;
    }
    return parseProperties(reply.get());
}

int RadarStatus::parseProperties(sd_bus_message* message) {
    return Veskar::SdBus::readDictionary(
        message,
        [](int code) {
            syslog(LOG_ERR, "RadarStatus: Failed to enter array. Error code: %d\n", code);
        },
        [](int code) {
            syslog(LOG_ERR, "RadarStatus: Failed to read property. Error code: %d\n", code);
        },
        [&](const std::string& name) {
            if (name == "Enabled") {
                return parseIsEnabled(message);
            }
            if (name == "FailureStatus") {
                return parseFailure(message);
            }
            if (name == "RadarProfile") {
                return parseRadarProfile(message);
            }
            return sd_bus_message_skip(message, "v");
        });
}

int RadarStatus::parseIsEnabled(sd_bus_message* message) {
    enterContracted(message, "b");
    int enabled = 0;
    const int r = sd_bus_message_read_basic(message, SD_BUS_TYPE_BOOLEAN, &enabled);
    if (r < 0) {
        syslog(LOG_ERR, "RadarStatus: Failed to read property value. Error code: %d\n", r);
        return r;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        isEnabled_ = enabled != 0;
    }
    return sd_bus_message_exit_container(message);
}

int RadarStatus::parseFailure(sd_bus_message* message) {
    enterContracted(message, "a{sv}");
    Failures reported;
    std::size_t added = 0;
    const int result = Veskar::SdBus::readDictionary(
        message,
        [](int code) {
            syslog(LOG_ERR, "RadarStatus: Failed to enter FailureStatus array. Error code: %d\n",
                   code);
        },
        [](int code) {
            syslog(LOG_ERR, "RadarStatus: Failed to read failure. Error code: %d\n", code);
        },
        [&](const char* name) {
            std::pair<int, bool> status;
            const int r = readFailureStatus(message, status);
            if (r < 0) {
                return r;
            }
            // Read without the lock: only this thread writes.
            const bool isKnown = failure_.count(name) > 0 || reported.count(name) > 0;
            if (isKnown || failure_.size() + added < mostFailures) {
                added += isKnown ? 0 : 1;
                reported[name] = status;
            }
            return r;
        });
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& [name, status] : reported) {
            failure_[name] = status;
        }
    }
    return result < 0 ? result : sd_bus_message_exit_container(message);
}

int RadarStatus::parseRadarProfile(sd_bus_message* message) {
    enterContracted(message, "s");
    const char* profile = nullptr;
    const int r = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &profile);
    if (r < 0) {
        syslog(LOG_ERR, "RadarStatus: Failed to read configuration value. Error code: %d\n", r);
        return r;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        radarProfile_ = profile;
    }
    return sd_bus_message_exit_container(message);
}

bool RadarStatus::getIsEnabled() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return isEnabled_;
}

RadarStatus::Failures RadarStatus::getFailure() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return failure_;
}

std::string RadarStatus::getRadarProfile() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return radarProfile_;
}

}  // namespace Impl

namespace Dbus::RadarStatus {

void init() {
    Impl::RadarStatus::instance();
}

bool getIsEnabled() {
    return Impl::RadarStatus::instance().getIsEnabled();
}

std::map<std::string, std::pair<int, bool>> getFailure() {
    return Impl::RadarStatus::instance().getFailure();
}

std::string getRadarProfile() {
    return Impl::RadarStatus::instance().getRadarProfile();
}

}  // namespace Dbus::RadarStatus
