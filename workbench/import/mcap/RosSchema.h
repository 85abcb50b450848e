// SPDX-License-Identifier: Apache-2.0
// Definitions of ROS 2 messages, and messages read by them.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace Workbench {

/// The definition of a message with those that it uses, as MCAP files state them (encoding
/// "ros2msg"): the text of the .msg file, and behind lines of "=" those of the others, each with
/// "MSG: package/Name" above.
class RosSchema {
public:
    /// @param name as "radar_msgs/msg/RadarTracks"
    /// @param text see above
    /// @throw InputError when a line is no field, or a type has no definition
    RosSchema(const std::string& name, std::string_view text);

    /// Reads a message in CDR (OMG Common Data Representation, XCDR version 1), as ROS 2 writes it.
    /// @param data the message behind its encapsulation header of 4 bytes, and that
    /// @return an object with all fields; arrays of any kind are arrays
    /// @throw InputError when the message is shorter than its definition asks for
    nlohmann::json read(std::string_view data) const;

private:
    friend class RosMessageReader;

    enum class Many { One, Fixed, Sequence };
    struct Field {
        std::string name;
        std::string type;  ///< a primitive one, or the name of a definition
        Many many = Many::One;
        std::size_t count = 1;  ///< of a fixed array
    };
    using Fields = std::vector<Field>;

    void addDefinition(const std::string& name, std::string_view text);
    std::size_t heightOf(const std::string& name, std::size_t depth,
                         std::map<std::string, std::size_t>& heights) const;

    std::string name_;
    std::map<std::string, Fields> definitions_;
};

}  // namespace Workbench
