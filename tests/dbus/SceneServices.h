// SPDX-License-Identifier: Apache-2.0
// What the clients of the scene call.
#pragma once

#include "support/FakeService.h"

namespace VeskarTest {

const FakeService::Member getDayNight{"/com/nolt/Optics0", "com.nolt.DayNight1", "GetDayNight"};
const FakeService::Member getProperty{"/com/nolt/Lumd/SNRBlock", "org.freedesktop.DBus.Properties",
                                      "Get"};

}  // namespace VeskarTest
