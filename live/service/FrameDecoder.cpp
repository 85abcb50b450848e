// SPDX-License-Identifier: Apache-2.0
#include "live/service/FrameDecoder.h"

#include <veskar-host/InputError.h>

#include "host/json/LineText.h"
#include "live/onvif/SceneCodec.h"

#include <cmath>
#include <string>
#include <utility>

namespace Veskar::Live {
namespace {

/// ONVIF scene descriptions.
class OnvifDecoder : public FrameDecoder {
public:
    OnvifDecoder(const SensorSettings& sensor, const Host::Installation& installation)
        : isXml_(sensor.format == SensorFormat::OnvifXml),
          mapper_(installation, optionsFor(sensor)) {}

    std::vector<StampedFrame> decode(const Message& message) override {
        const Scene scene = isXml_ ? reader_.readXml(message.bytes, mapper_.leftOut())
                                   : reader_.readJson(message.bytes, mapper_.leftOut());
        return mapper_.map(scene, message.channel);
    }
    void forget(const std::string& channel) override { mapper_.forget(channel); }
    const LeftOut* leftOut() override { return &mapper_.leftOut(); }

private:
    static SceneMapper::Options optionsFor(const SensorSettings& sensor) {
        SceneMapper::Options options;
        for (const std::string& module : sensor.ignoredModules) {
            options.modules[module] = ModuleUse::Ignored;
        }
        options.otherModules = sensor.source == Radar ? ModuleUse::Radar : ModuleUse::Video;
        return options;
    }

    bool isXml_;
    SceneReader reader_;
    SceneMapper mapper_;
};

/// The frames of recordings, stamped in UTC.
class LineDecoder : public FrameDecoder {
public:
    /// @param source whose frames are taken
    /// @param sharesInput frames of the other sensor are left out; otherwise they are refused
    LineDecoder(Source source, bool sharesInput)
        : source_(source),
          sharesInput_(sharesInput),
          otherLine_(std::string(R"({"source":")") +
                     Host::sourceName(source == Radar ? VideoObject : Radar) + '"') {}

    std::vector<StampedFrame> decode(const Message& message) override {
        if (isOtherLine(message.bytes) ||
            (sharesInput_ && message.bytes.substr(0, otherLine_.size()) == otherLine_)) {
            return {};
        }
        Host::SensorFrame frame = Host::parseSensorFrame(message.bytes);
        if (frame.source != source_) {
            if (sharesInput_) {
                return {};
            }
            throw Host::InputError("source",
                                   std::string("expected a frame of ") + Host::sourceName(source_));
        }
        constexpr double latest = 9e9;  // seconds since 1970 that a clock here can hold
        if (std::abs(frame.time) > latest) {
            throw Host::InputError("time",
                                   Host::Internal::shortestText(frame.time) + " is no UNIX time");
        }
        StampedFrame stamped;
        stamped.time = std::chrono::microseconds(std::llround(frame.time * 1e6));
        stamped.frame = std::move(frame);
        std::vector<StampedFrame> frames;
        frames.push_back(std::move(stamped));
        return frames;
    }

private:
    /// What recordings have beside frames of sensors.
    static bool isOtherLine(std::string_view line) {
        const auto begins = [line](std::string_view with) {
            return line.substr(0, with.size()) == with;
        };
        return begins(R"({"format":)") || begins(R"({"source":"truth")") || begins(R"({"end":)");
    }

    Source source_;
    bool sharesInput_;
    std::string otherLine_;  ///< how one usually begins
};

}  // namespace

std::unique_ptr<FrameDecoder> FrameDecoder::make(const SensorSettings& sensor,
                                                 const Host::Installation& installation) {
    if (sensor.format == SensorFormat::JsonLines) {
        return std::make_unique<LineDecoder>(sensor.source, sensor.sharesInput);
    }
    return std::make_unique<OnvifDecoder>(sensor, installation);
}

}  // namespace Veskar::Live
