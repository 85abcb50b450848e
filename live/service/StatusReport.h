// SPDX-License-Identifier: Apache-2.0
// What the program tells of itself.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Veskar::Live {

/// Numbers with names, written once and told in two forms. Those of one sensor, output or broker
/// must follow each other, and the groups, too.
class StatusReport {
public:
    /// How a number behaves.
    enum class Kind {
        Counter,  ///< only grows while the program runs
        Gauge,    ///< goes up and down
    };

    /// What a number counts; Prometheus' names end with it.
    enum class Unit { One, Seconds, Bytes };

    /// Adds a number of the whole program.
    /// @param name in the style of JSON keys: "framesTaken"
    /// @param value the number
    /// @param kind how it behaves
    /// @param unit what it counts
    void add(std::string_view name, double value, Kind kind, Unit unit = Unit::One) {
        add("", "", name, value, kind, unit);
    }
    /// Adds a number of a sensor, an output or a broker.
    /// @param group "sensor", "output" or "broker"
    /// @param instance its name
    /// @param name as above
    /// @param value the number
    /// @param kind how it behaves
    /// @param unit what it counts
    void add(std::string_view group, std::string_view instance, std::string_view name, double value,
             Kind kind, Unit unit = Unit::One);
    /// Adds a counter of what the messages of a sensor said and the fusion has no place for.
    /// @param sensor its name
    /// @param term from a message: any text
    /// @param count how often
    void addLeftOut(std::string_view sensor, std::string_view term, double count);

    /// @return an object on one line, without line end: the numbers of the program by their names,
    ///         those of groups by group and instance: {"uptime":12.5,"sensor":{"camera":{...}},
    ///         "leftOut":{"camera":{"Class Fire":3}}}
    std::string toJson() const;
    /// @return the text that Prometheus reads: veskar_uptime_seconds 12.5,
    ///         veskar_sensor_messages_total{sensor="camera"} 250,
    ///         veskar_left_out_total{sensor="camera",term="Class Fire"} 3
    std::string toPrometheus() const;

private:
    struct Number {
        std::string group;
        std::string instance;
        std::string name;
        double value;
        Kind kind;
        Unit unit;
    };

    static std::string metricOf(const Number& number);

    std::vector<Number> numbers_;
};

}  // namespace Veskar::Live
