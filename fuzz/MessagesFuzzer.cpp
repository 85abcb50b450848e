// SPDX-License-Identifier: Apache-2.0
// Data from the bus and to sockets. The clients stay usable after any dictionary of properties;
// positions returned as valid are finite; every calibration datagram is JSON with the values of the
// samples.
#include <veskar/AutocalibrationHandler.h>
#include <veskar/GeoLocation.h>
#include <veskar/RadarStatus.h>

#include "dbus/LocalMessage.h"
#include "support/FakeService.h"
#include "support/Require.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <jansson.h>

using namespace VeskarFuzz;
using VeskarTest::Body;
using VeskarTest::LocalMessage;

namespace {

double anyNumber(FuzzedDataProvider& bytes) {
    const auto bits = bytes.ConsumeIntegral<std::uint64_t>();
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

std::string anyKey(FuzzedDataProvider& bytes) {
    static const char* const known[] = {"latitude", "longitude", "heading", "altitude",
                                        "valid_pos"};
    if (bytes.ConsumeBool()) {
        return bytes.PickValueInArray(known);
    }
    // The wire format carries UTF-8 without NUL.
    std::string key = bytes.ConsumeRandomLengthString(16);
    for (char& character : key) {
        character = static_cast<char>('!' + (static_cast<unsigned char>(character) % 90));
    }
    return key;
}

Body anyEntry(FuzzedDataProvider& bytes, int depth = 0) {
    const std::string key = anyKey(bytes);
    switch (bytes.ConsumeIntegralInRange(0, depth < 3 ? 6 : 5)) {
        case 0:
        case 1:
            return VeskarTest::number(key, anyNumber(bytes));
        case 2:
            return VeskarTest::truth(key, bytes.ConsumeBool());
        case 3:
            return VeskarTest::text(key, anyKey(bytes));
        case 4:
            return VeskarTest::integer(key, bytes.ConsumeIntegral<int>());
        case 5:
            return VeskarTest::status(key, bytes.ConsumeIntegral<int>(), bytes.ConsumeBool());
        default:
            return VeskarTest::entries(key, {anyEntry(bytes, depth + 1)});
    }
}

/// Radar properties with the types of the interface; other types terminate the process
/// intentionally.
Body radarEntry(FuzzedDataProvider& bytes) {
    switch (bytes.ConsumeIntegralInRange(0, 3)) {
        case 0:
            return VeskarTest::truth("Enabled", bytes.ConsumeBool());
        case 1:
            return VeskarTest::text("RadarProfile", anyKey(bytes));
        case 2:
            return VeskarTest::entries("FailureStatus", {anyEntry(bytes, 3), anyEntry(bytes, 3)});
        default:
            return VeskarTest::integer("Other", bytes.ConsumeIntegral<int>());
    }
}

std::vector<Body> several(FuzzedDataProvider& bytes, Body (*entry)(FuzzedDataProvider&)) {
    std::vector<Body> content(bytes.ConsumeIntegralInRange<std::size_t>(0, 12));
    for (Body& body : content) {
        body = entry(bytes);
    }
    return content;
}

void readPosition(FuzzedDataProvider& bytes) {
    Impl::GeoLocation client;
    const LocalMessage message(VeskarTest::dictionary(
        several(bytes, [](FuzzedDataProvider& input) { return anyEntry(input); })));
    client.parse(message.get());
    const auto position = client.getPosition(bytes.ConsumeFloatingPointInRange(0.0, 1000.0),
                                             bytes.ConsumeFloatingPointInRange(-360.0, 360.0));
    require(
        !position.valid || (std::isfinite(position.latitude) && std::isfinite(position.longitude)),
        "a valid position is finite");
}

void readStatus(FuzzedDataProvider& bytes) {
    Impl::RadarStatus client;
    const LocalMessage message(VeskarTest::dictionary(several(bytes, radarEntry)));
    client.parseProperties(message.get());
    require(client.getFailure().size() <= 1000, "failures are bounded");
    client.getIsEnabled();
    client.getRadarProfile();
}

bool isClose(const json_t* object, const char* key, double value) {
    const double read = json_number_value(json_object_get(object, key));
    return std::abs(read - value) <= 1e-5 * std::abs(value);
}

void formatSamples(FuzzedDataProvider& bytes) {
    Veskar::CalibrationPayload payload{{}, bytes.ConsumeIntegral<std::int64_t>()};
    const int count = bytes.ConsumeIntegralInRange(0, 11);
    for (int i = 0; i < count; ++i) {
        const auto coordinate = [&] { return bytes.ConsumeFloatingPointInRange(-2.0, 2.0); };
        const double u = coordinate();
        const double v = coordinate();
        payload.data.push_back(
            {u, v, bytes.ConsumeIntegral<int>(), bytes.ConsumeFloatingPointInRange(0.0, 1e6)});
    }
    static const Veskar::AutocalibrationHandler handler((Veskar::Config()));
    const std::string text = handler.formatPayload(payload);
    json_error_t error;
    const std::unique_ptr<json_t, void (*)(json_t*)> json(
        json_loadb(text.data(), text.size(), 0, &error), [](json_t* value) { json_decref(value); });
    require(json != nullptr, "a calibration datagram is JSON");
    require(
        json_integer_value(json_object_get(json.get(), "radarTimestamp_ns")) == payload.timestamp,
        "the time stamp is whole");
    const json_t* data = json_object_get(json.get(), "data");
    require(json_array_size(data) == payload.data.size(), "no sample is lost");
    for (std::size_t i = 0; i < payload.data.size(); ++i) {
        const json_t* sample = json_array_get(data, i);
        require(
            isClose(sample, "u_video", payload.data[i].u_video) &&
                isClose(sample, "v_video", payload.data[i].v_video) &&
                isClose(sample, "r_radar", payload.data[i].r_radar) &&
                json_integer_value(json_object_get(sample, "id_radar")) == payload.data[i].id_radar,
            "a sample says what was measured");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // No bus: the clients get their data from here only.
    static const int hidden = setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent", 1);
    require(hidden == 0, "the bus can be hidden");
    FuzzedDataProvider bytes(data, size);
    switch (bytes.ConsumeIntegralInRange(0, 2)) {
        case 0:
            readPosition(bytes);
            break;
        case 1:
            readStatus(bytes);
            break;
        default:
            formatSamples(bytes);
    }
    return 0;
}
