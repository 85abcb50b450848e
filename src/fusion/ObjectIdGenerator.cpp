// SPDX-License-Identifier: Apache-2.0
#include <veskar/ObjectIdGenerator.h>

#include <limits>

namespace Veskar {

ObjectIdGenerator* ObjectIdGenerator::instance = nullptr;

std::int32_t ObjectIdGenerator::next() {
    const bool isLargest = lastId == std::numeric_limits<std::int32_t>::max();
    lastId = isLargest || lastId + 1 < 0 ? 0 : lastId + 1;
    return lastId;
}

}  // namespace Veskar
