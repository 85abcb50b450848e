// SPDX-License-Identifier: Apache-2.0
// A message for reading, made without a bus.
#pragma once

#include "support/FakeService.h"

struct sd_bus;
struct sd_bus_message;

namespace VeskarTest {

/// A sealed message with a body, positioned at its beginning.
class LocalMessage {
public:
    explicit LocalMessage(const Body& body);
    ~LocalMessage();
    LocalMessage(const LocalMessage&) = delete;
    LocalMessage& operator=(const LocalMessage&) = delete;

    sd_bus_message* get() const { return message_; }

private:
    sd_bus* bus_ = nullptr;
    sd_bus_message* message_ = nullptr;
    int peer_ = -1;
};

}  // namespace VeskarTest
