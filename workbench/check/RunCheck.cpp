// SPDX-License-Identifier: Apache-2.0
#include "check/RunCheck.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "check/DocumentCheck.h"
#include "live/service/RunConfiguration.h"
#include "live/transport/Credentials.h"
#include "live/transport/ListeningSocket.h"
#include "live/transport/MqttSession.h"
#include "live/view/Admission.h"
#include "recording/LabelWords.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace Workbench {
namespace {

namespace Live = Veskar::Live;

/// @param key begins with "[INDEX]", which is taken out of it
/// @return that item; null when there is none
const LocatedValue* takeItem(const LocatedValue& array, std::string_view& key) {
    const std::size_t close = std::min(key.find(']'), key.size() - 1);
    std::size_t index = 0;
    const auto [end, fault] = std::from_chars(key.data() + 1, key.data() + close, index);
    if (fault != std::errc() || end != key.data() + close || index >= array.elements.size()) {
        return nullptr;
    }
    key.remove_prefix(close + 1);
    return &array.elements[index];
}

/// A member's name may itself contain dots and brackets: the longest one that fits counts.
/// @param key begins with the name of a member, which is taken out of it
/// @return that member; null when there is none
const LocatedValue* takeMember(const LocatedValue& object, std::string_view& key) {
    const LocatedMember* found = nullptr;
    for (const LocatedMember& member : object.members) {
        const std::size_t size = member.key.size();
        const bool isAtStart = key.compare(0, size, member.key) == 0 &&
                               (size == key.size() || key[size] == '.' || key[size] == '[');
        if (isAtStart && (found == nullptr || size >= found->key.size())) {
            found = &member;
        }
    }
    if (found == nullptr) {
        return nullptr;
    }
    key.remove_prefix(found->key.size());
    return &found->value;
}

/// @param key place of a value, as "sensors[1].latency"
/// @return the line of the value, or of the nearest one around it
std::uint64_t lineOf(const LocatedValue& document, std::string_view key) {
    const LocatedValue* value = &document;
    for (const LocatedValue* inner = value; inner != nullptr && !key.empty();) {
        inner = key.front() == '[' && value->kind == LocatedValue::Kind::Array
                    ? takeItem(*value, key)
                    : takeMember(*value, key);
        value = inner != nullptr ? inner : value;
        key.remove_prefix(!key.empty() && key.front() == '.' ? 1 : 0);
    }
    return static_cast<std::uint64_t>(value->line);
}

std::string itemOf(const char* name, std::size_t index) {
    return fmt::format("{}[{}]", name, index);
}

/// Checks what the reader does not look at: files and addresses of this machine, and what has no
/// effect.
class UseCheck {
public:
    UseCheck(const Live::RunConfiguration& run, const LocatedValue& document, Findings& findings)
        : run_(run), document_(document), findings_(findings) {}

    void check() {
        checkFusion();
        for (std::size_t i = 0; i < run_.brokers.size(); ++i) {
            checkFiles(run_.brokers[i].options, itemOf("brokers", i));
        }
        for (std::size_t i = 0; i < run_.sensors.size(); ++i) {
            checkAddress(run_.sensors[i].input, itemOf("sensors", i) + ".input.address");
        }
        for (std::size_t i = 0; i < run_.outputs.size(); ++i) {
            checkAddress(run_.outputs[i].to, itemOf("outputs", i) + ".to.address");
            checkClasses(run_.outputs[i].classes, itemOf("outputs", i) + ".classes");
        }
        if (run_.status.prometheus) {
            checkAddress(*run_.status.prometheus, "status.prometheus");
        }
        if (run_.view) {
            checkAddress(run_.view->place, "view.address");
            checkToken(run_.view->token);
            checkPictures(run_.view->pictures);
        }
        checkUse();
    }

private:
    void add(Severity severity, const std::string& key, std::string message) {
        findings_.push_back({severity, lineOf(document_, key), key, "", std::move(message)});
    }

    void checkFusion() {
        if (run_.fusion.empty()) {
            return;
        }
        try {
            Findings faults = checkDocument(run_.fusion, DocumentKind::Configuration);
            faults.erase(std::remove_if(faults.begin(), faults.end(),
                                        [](const Finding& found) {
                                            return found.severity != Severity::Fault;
                                        }),
                         faults.end());
            if (!faults.empty()) {
                add(Severity::Fault, "fusion",
                    toText(faults.front(), run_.fusion) +
                        (faults.size() > 1
                             ? fmt::format("; veskar check names {} more", faults.size() - 1)
                             : ""));
            }
        } catch (const InputError& error) {
            add(Severity::Fault, "fusion", error.what());
        }
    }

    /// The check that `run` makes; it names the path. What systemd hands to the service alone is
    /// not here to be checked.
    void checkFiles(Live::MqttOptions options, const std::string& broker) {
        if (Live::isHandedOver(options.credentials)) {
            options.credentials.clear();
        }
        if (options.tls && Live::isHandedOver(options.tls->key)) {
            options.tls->key.clear();
            options.tls->certificate.clear();
        }
        try {
            Live::MqttSession::check(options);
        } catch (const InputError& error) {
            const Live::MqttTls tls = options.tls.value_or(Live::MqttTls());
            const std::pair<const char*, const std::string*> files[] = {
                {".credentials", &options.credentials},
                {".tls.authorities", &tls.authorities},
                {".tls.certificate", &tls.certificate},
                {".tls.key", &tls.key}};
            const auto* const file = std::find_if(
                std::begin(files), std::end(files),
                [&](const auto& candidate) { return *candidate.second == error.place(); });
            add(Severity::Fault, broker + (file != std::end(files) ? file->first : ""),
                error.what());
        }
    }

    /// What systemd hands over is not here to be checked.
    void checkToken(const std::string& file) {
        if (file.empty() || Live::isHandedOver(file)) {
            return;
        }
        try {
            Live::Admission::readToken(file);
        } catch (const InputError& error) {
            add(Severity::Fault, "view.token", error.what());
        }
    }

    void checkPictures(const std::optional<Live::PictureSettings>& pictures) {
        if (!pictures) {
            return;
        }
        if (!pictures->directory.empty() && !std::filesystem::is_directory(pictures->directory)) {
            add(Severity::Warning, "view.pictures.directory",
                fmt::format("{}: is no directory", pictures->directory));
        }
        if (!pictures->credentials.empty() && !Live::isHandedOver(pictures->credentials)) {
            try {
                Live::Credentials::read(pictures->credentials);
            } catch (const InputError& error) {
                add(Severity::Fault, "view.pictures.credentials", error.what());
            }
        }
    }

    /// Binds a socket to the address, without a port.
    void checkAddress(const Live::NetworkPlace& place, const std::string& key) {
        try {
            Live::ListeningSocket::udp({place.host, 0});
        } catch (const InputError& error) {
            add(Severity::Fault, key, fmt::format("{}: {}", place.host, error.reason()));
        }
    }

    /// @param place of any kind; those that listen in a network are checked
    template <typename Place>
    void checkAddress(const Place& place, const std::string& key) {
        std::visit(
            [&](const auto& kind) {
                using Kind = std::decay_t<decltype(kind)>;
                if constexpr (std::is_same_v<Kind, Live::TcpPlace> ||
                              std::is_same_v<Kind, Live::UdpPlace>) {
                    checkAddress(static_cast<const Live::NetworkPlace&>(kind), key);
                }
            },
            place);
    }

    /// Scene descriptions give words of the vocabulary only; JSON Lines may have others.
    void checkClasses(const std::set<std::string>& classes, const std::string& key) {
        const bool hasOthers = std::any_of(
            run_.sensors.begin(), run_.sensors.end(),
            [](const auto& sensor) { return sensor.format == Live::SensorFormat::JsonLines; });
        for (const std::string& word : classes) {
            if (const auto advice = adviceOn(WordKind::Class, word)) {
                add(hasOthers ? Severity::Warning : Severity::Fault, key,
                    fmt::format("\"{}\" is {}", word, *advice));
            }
        }
    }

    void checkUse() {
        if (run_.outputs.empty() && !run_.record && !run_.view) {
            add(Severity::Warning, "outputs", "names no output: nobody gets what is fused");
        }
        const Live::StatusSettings& status = run_.status;
        if (document_.find("status") != nullptr && !status.topic && !status.socket &&
            !status.prometheus) {
            add(Severity::Warning, "status",
                "names no place (mqtt, socket or prometheus): nobody gets it");
        }
    }

    const Live::RunConfiguration& run_;
    const LocatedValue& document_;
    Findings& findings_;
};

}  // namespace

void checkRun(const std::string& text, const LocatedValue& document, Findings& findings) {
    try {
        const Live::RunConfiguration run = Live::RunConfiguration::parse(text);
        UseCheck(run, document, findings).check();
    } catch (const InputError& error) {
        findings.push_back(
            {Severity::Fault, lineOf(document, error.key()), error.key(), "", error.reason()});
    }
}

}  // namespace Workbench
