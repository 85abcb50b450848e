// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/ConfirmationDelay.h"

#include "evaluate/metrics/Average.h"

#include <algorithm>

namespace Workbench {

void ConfirmationDelay::add(const Instant& instant, const Pairs& pairs) {
    for (const TrueObject& truth : instant.truths) {
        objects_.try_emplace(truth.id, ObjectTimes{instant.time, std::nullopt});
    }
    for (const auto& pair : pairs) {
        ObjectTimes& object = objects_[instant.truths[static_cast<std::size_t>(pair.first)].id];
        object.found = object.found.value_or(instant.time);
    }
}

ConfirmationDelay::Result ConfirmationDelay::result() const {
    Result result;
    result.longest = nothingToAverage;
    double sum = 0.0;
    for (const auto& [id, object] : objects_) {
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
