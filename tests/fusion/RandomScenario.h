// SPDX-License-Identifier: Apache-2.0
// Seeded scenes with all kinds of sensor faults.
#pragma once

#include "fusion/Step.h"
#include "support/RandomEstimates.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VeskarTest {

/// A few objects that move, appear and disappear, seen by two sensors that lose them, renumber
/// them, jump, send late, early, repeated, empty or false reports. Estimates are well conditioned,
/// so that two ways of computing agree closely; gates and limits are random, too.
class RandomScenario {
public:
    RandomScenario(unsigned seed, const Switches& switches);

    const Veskar::Config& getConfig() const { return config_; }
    Step next();

private:
    /// A sensor's view of an object.
    struct View {
        int id = 0;
        int framesLost = 0;
    };
    struct Object {
        Veskar::StateVector state;
        std::string className;
        std::map<Veskar::Source, View> views;
    };

    bool chance(double probability) { return random_.uniform(0.0, 1.0) < probability; }
    template <typename T>
    T oneOf(const std::vector<T>& values);

    void advance();
    Object makeObject();
    Veskar::StateVector placeInScene();
    void report(Object& object, Step& step);
    std::shared_ptr<Veskar::Track> makeReport(const Step& step, int id, const Object& object);
    void disturb(Step& step);

    RandomEstimates random_;
    Veskar::Config config_;
    std::vector<Object> objects_;
    double time_ = 100.0;  ///< seconds
};

}  // namespace VeskarTest
