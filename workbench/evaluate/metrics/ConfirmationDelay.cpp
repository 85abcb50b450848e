// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/ConfirmationDelay.h"

#include "evaluate/metrics/Average.h"

#include <algorithm>

namespace Workbench {

void ConfirmationDelay::add(const Instant& instant, const Pairs& pairs) {
    for (const TrueObject& truth : instant.truths) {
        const auto place = static_cast<std::size_t>(truth.number);
        if (place >= objects_.size()) {
            objects_.resize(place + 1);
        }
        if (!objects_[place]) {
            objects_[place] = ObjectTimes{truth.id, instant.time, std::nullopt};
        }
    }
    for (const auto& pair : pairs) {
        const TrueObject& truth = instant.truths[static_cast<std::size_t>(pair.first)];
        std::optional<double>& found = objects_[static_cast<std::size_t>(truth.number)]->found;
        found = found.value_or(instant.time);
    }
}

ConfirmationDelay::Result ConfirmationDelay::result() const {
    Result result;
    result.longest = nothingToAverage;
    double sum = 0.0;
    std::vector<ObjectTimes> objects;
    for (const std::optional<ObjectTimes>& object : objects_) {
        if (object) {
            objects.push_back(*object);
        }
    }
    std::sort(objects.begin(), objects.end(),
              [](const ObjectTimes& a, const ObjectTimes& b) { return a.id < b.id; });
    for (const ObjectTimes& object : objects) {
        if (!object.found) {
            ++result.objectsNeverFound;
            continue;
        }
        const double delay = *object.found - object.appeared;
        result.longest = result.objectsFound++ == 0 ? delay : std::max(result.longest, delay);
        sum += delay;
    }
    result.mean = average(sum, result.objectsFound);
    return result;
}

}  // namespace Workbench
