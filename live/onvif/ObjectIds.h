// SPDX-License-Identifier: Apache-2.0
// From the names of objects in scene descriptions to the fusion's ids.
#pragma once

#include "live/onvif/SceneDescription.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Veskar::Live {

/// The ids of the objects of one sensor. ONVIF's are integers of any length or text, counted by
/// each module on its own; the fusion's have 32 bits. Ids are given in turn, from 1 on, and never
/// to two objects that are known at a time. An id that was forgotten returns only when all others
/// have had their turn.
///
/// A UUID names an object in all modules, an ObjectId in one. When both are known for different
/// objects, the UUID counts, and the ObjectId passes to its object; an ObjectId that comes with
/// another UUID than before belongs to another object.
class ObjectIds {
public:
    /// @param forgetAfter time after which an object that is not reported is forgotten
    /// @param most objects that are known at a time; the one that was reported longest ago goes
    ///             when there are more
    ObjectIds(UtcTime forgetAfter, std::size_t most);

    /// An object and since when it is known.
    struct Known {
        std::int32_t id = 0;
        UtcTime since{};
    };

    /// @param module the module that names it
    /// @param name name of an object that is reported
    /// @param now time of the report
    /// @return its id, a new one when it was not known
    Known report(const std::string& module, const ObjectName& name, UtcTime now);
    /// @param module the module that names it
    /// @param name name of an object
    /// @return its id when it is known
    std::optional<std::int32_t> find(const std::string& module, const ObjectName& name) const;
    /// Gives an object another name; its id remains. An object that had the new name is forgotten.
    /// Without effect when the old name is not known.
    /// @param module the module that names it
    /// @param from its name until now
    /// @param to its name from now on
    void rename(const std::string& module, const ObjectName& from, const ObjectName& to);
    /// @param module the module that names it
    /// @param name name of an object that never returns
    void forget(const std::string& module, const ObjectName& name);
    /// Forgets what was not reported for long.
    /// @param now time of a frame; may go back
    void sweep(UtcTime now);

    /// @return number of objects that are known
    std::size_t size() const { return objects_.size(); }

private:
    /// A part of a name. An object has one of each slot at most.
    struct Key {
        std::string slot;  ///< the UUID, or the ObjectId of a module
        std::string text;  ///< with the slot before it: no other key is equal
    };
    struct Object {
        UtcTime since{};
        UtcTime last{};
        std::vector<Key> keys;  ///< under which it is known
    };

    static std::vector<Key> keysOf(const std::string& module, const ObjectName& name);
    std::optional<std::int32_t> find(const std::vector<Key>& keys) const;
    std::int32_t unusedId();
    void know(std::int32_t id, const Key& key);
    void release(std::int32_t id, const Key& key);
    void forget(std::int32_t id);
    void forgetOldest();

    UtcTime forgetAfter_;
    std::size_t most_;
    std::int32_t lastId_ = 0;
    std::optional<UtcTime> lastSweep_;
    std::unordered_map<std::int32_t, Object> objects_;
    std::unordered_map<std::string, std::int32_t> ids_;  ///< by the text of a key
};

}  // namespace Veskar::Live
