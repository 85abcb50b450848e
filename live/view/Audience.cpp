// SPDX-License-Identifier: Apache-2.0
#include "live/view/Audience.h"

#include <algorithm>

namespace Veskar::Live {

void Audience::add(const std::optional<Subject>& subject) {
    ++size_;
    if (subject) {
        const std::lock_guard<std::mutex> lock(mutex_);
        subjects_.insert(*subject);
        ++version_;
    }
}

void Audience::remove(const std::optional<Subject>& subject) {
    if (subject) {
        const std::lock_guard<std::mutex> lock(mutex_);
        subjects_.erase(subjects_.find(*subject));
        ++version_;
    }
    --size_;
}

std::vector<Subject> Audience::subjects() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<Subject> once;
    std::unique_copy(subjects_.begin(), subjects_.end(), std::back_inserter(once));
    return once;
}

}  // namespace Veskar::Live
