// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/ObjectIds.h"

#include <algorithm>
#include <limits>

namespace Veskar::Live {
namespace {

UtcTime between(UtcTime a, UtcTime b) {
    return a > b ? a - b : b - a;
}

/// Shortest time between two looks at all objects.
constexpr UtcTime sweepInterval = std::chrono::seconds(1);

const std::string uuidSlot = "uuid:";

}  // namespace

ObjectIds::ObjectIds(UtcTime forgetAfter, std::size_t most)
    : forgetAfter_(forgetAfter), most_(std::max<std::size_t>(most, 1)) {}

std::vector<ObjectIds::Key> ObjectIds::keysOf(const std::string& module, const ObjectName& name) {
    std::vector<Key> keys;
    if (!name.uuid.empty()) {
        keys.push_back({uuidSlot, uuidSlot + name.uuid});
    }
    if (!name.id.empty()) {
        // The length of the module's name tells where the id begins.
        const std::string slot = "id" + std::to_string(module.size()) + ":" + module;
        keys.push_back({slot, slot + name.id});
    }
    return keys;
}

std::optional<std::int32_t> ObjectIds::find(const std::vector<Key>& keys) const {
    for (const Key& key : keys) {
        const auto found = ids_.find(key.text);
        if (found == ids_.end()) {
            continue;
        }
        const std::vector<Key>& known = objects_.at(found->second).keys;
        const bool hasOtherUuid = std::any_of(known.begin(), known.end(), [&](const Key& other) {
            return other.slot == keys[0].slot && other.text != keys[0].text;
        });
        if (&key == keys.data() || !hasOtherUuid) {
            return found->second;
        }
    }
    return std::nullopt;
}

std::optional<std::int32_t> ObjectIds::find(const std::string& module,
                                            const ObjectName& name) const {
    return find(keysOf(module, name));
}

ObjectIds::Known ObjectIds::report(const std::string& module, const ObjectName& name, UtcTime now) {
    const std::vector<Key> keys = keysOf(module, name);
    std::optional<std::int32_t> id = find(keys);
    if (!id) {
        if (objects_.size() >= most_) {
            forgetOldest();
        }
        id = unusedId();
        objects_[*id].since = now;
    }
    objects_[*id].last = now;
    for (const Key& key : keys) {
        know(*id, key);
    }
    return {*id, objects_[*id].since};
}

void ObjectIds::know(std::int32_t id, const Key& key) {
    const auto [known, isNew] = ids_.try_emplace(key.text, id);
    if (!isNew && known->second == id) {
        return;
    }
    if (!isNew) {
        // The name now belongs to this object. One that has no other name is gone.
        const std::int32_t former = known->second;
        release(former, key);
        if (objects_.at(former).keys.empty()) {
            objects_.erase(former);
        }
        ids_[key.text] = id;
    }
    std::vector<Key>& keys = objects_.at(id).keys;
    const auto former = std::find_if(keys.begin(), keys.end(),
                                     [&](const Key& other) { return other.slot == key.slot; });
    if (former == keys.end()) {
        keys.push_back(key);
    } else {
        ids_.erase(former->text);
        *former = key;
    }
}

void ObjectIds::release(std::int32_t id, const Key& key) {
    ids_.erase(key.text);
    std::vector<Key>& keys = objects_.at(id).keys;
    keys.erase(std::remove_if(keys.begin(), keys.end(),
                              [&](const Key& other) { return other.text == key.text; }),
               keys.end());
}

std::int32_t ObjectIds::unusedId() {
    do {
        const bool isLast = lastId_ == std::numeric_limits<std::int32_t>::max();
        lastId_ = isLast ? 1 : lastId_ + 1;
    } while (objects_.count(lastId_) > 0);
    return lastId_;
}

void ObjectIds::rename(const std::string& module, const ObjectName& from, const ObjectName& to) {
    const std::optional<std::int32_t> id = find(module, from);
    if (!id || from == to) {
        return;
    }
    for (const Key& key : keysOf(module, from)) {
        const auto found = ids_.find(key.text);
        if (found != ids_.end() && found->second == *id) {
            release(*id, key);
        }
    }
    for (const Key& key : keysOf(module, to)) {
        const auto found = ids_.find(key.text);
        if (found != ids_.end() && found->second != *id) {
            forget(found->second);
        }
        know(*id, key);
    }
}

void ObjectIds::forget(const std::string& module, const ObjectName& name) {
    if (const auto id = find(module, name)) {
        forget(*id);
    }
}

void ObjectIds::forget(std::int32_t id) {
    const auto found = objects_.find(id);
    for (const Key& key : found->second.keys) {
        ids_.erase(key.text);
    }
    objects_.erase(found);
}

void ObjectIds::forgetOldest() {
    const auto oldest = std::min_element(
        objects_.begin(), objects_.end(),
        [](const auto& a, const auto& b) { return a.second.last < b.second.last; });
    forget(oldest->first);
}

void ObjectIds::sweep(UtcTime now) {
    if (lastSweep_ && between(now, *lastSweep_) < sweepInterval) {
        return;
    }
    lastSweep_ = now;
    std::vector<std::int32_t> gone;
    for (const auto& [id, object] : objects_) {
        if (between(now, object.last) > forgetAfter_) {
            gone.push_back(id);
        }
    }
    for (const std::int32_t id : gone) {
        forget(id);
    }
}

}  // namespace Veskar::Live
