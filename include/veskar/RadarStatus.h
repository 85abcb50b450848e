// SPDX-License-Identifier: Apache-2.0
// Whether the radar runs, what it complains about and which profile it uses.
#pragma once

#include <veskar/Export.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

struct sd_bus_message;

namespace Impl {

class PropertyClient;

/// The client of the radar service: reads its properties once and follows their changes.
///
/// Changes arrive on the thread that iterates the GLib main context that was the thread default at
/// construction; getters may be called from any thread. Failures are logged at error priority and
/// never reach the caller, but a property of the wrong type is a breach of contract and stops the
/// process.
class VESKAR_EXPORT RadarStatus {
public:
    /// Failures by name: a value and whether the failure is present. At most 1000 are kept; names
    /// that come when there are as many are left out.
    using Failures = std::map<std::string, std::pair<int, bool>>;

    /// Connects to the system bus and reads the status. When a step fails the instance lives on
    /// with its defaults: enabled, no failures, profile "area".
    RadarStatus();
    ~RadarStatus();
    RadarStatus(const RadarStatus&) = delete;
    RadarStatus& operator=(const RadarStatus&) = delete;

    /// @return the process-wide client, created by the first call
    static RadarStatus& instance();

    /// Asks the service for all properties; on the thread of the main context once the client
    /// exists. A service that has not answered is not asked again for 10 s.
    /// @return false when the bus or the reply failed, or the service was not asked
    bool initStatus();
    /// Reads a dictionary of properties; entries it does not know are skipped.
    /// @param message positioned at an a{sv}
    /// @return negative errno on failure
    int parseProperties(sd_bus_message* message);
    /// @param message positioned at a variant; anything but b stops the process
    /// @return negative errno on failure
    int parseIsEnabled(sd_bus_message* message);
    /// Failures that the message does not name keep their entries.
    /// @param message positioned at a variant; anything but a{sv} stops the process
    /// @return negative errno on failure
    int parseFailure(sd_bus_message* message);
    /// @param message positioned at a variant; anything but s stops the process
    /// @return negative errno on failure
    int parseRadarProfile(sd_bus_message* message);

    /// @return whether the radar is enabled
    bool getIsEnabled() const;
    /// @return a copy of the failures reported so far
    Failures getFailure() const;
    /// @return a copy of the detection profile's name
    std::string getRadarProfile() const;

private:
    int requestStatus();

    bool isEnabled_ = true;
    Failures failure_;
    std::string radarProfile_ = "area";
    mutable std::mutex mutex_;  // guards the values
    // Loop, bus and the bridge between loop and GLib. Last, so that it ends first: a change may
    // still be on its way on the main loop's thread.
    std::unique_ptr<PropertyClient> client_;
};

}  // namespace Impl

/// The radar's status, read from the process-wide client. Safe from any thread; no failure of the
/// bus or the service reaches the caller.
namespace Dbus::RadarStatus {

/// Creates the client: call it on the thread whose GLib main context shall follow the changes.
VESKAR_EXPORT void init();
/// @return whether the radar is enabled
VESKAR_EXPORT bool getIsEnabled();
/// @return a copy of the failures reported so far, at most 1000: name to value and presence
VESKAR_EXPORT std::map<std::string, std::pair<int, bool>> getFailure();
/// @return a copy of the detection profile's name
VESKAR_EXPORT std::string getRadarProfile();

}  // namespace Dbus::RadarStatus
