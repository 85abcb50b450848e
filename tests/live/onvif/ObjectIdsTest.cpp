// SPDX-License-Identifier: Apache-2.0
// From the names of objects to the fusion's ids.
#include "live/onvif/ObjectIds.h"

#include <map>
#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

ObjectName number(const std::string& id) {
    return {id, ""};
}

ObjectName uuid(const std::string& text) {
    return {"", text};
}

TEST(ObjectIds, AreTheSameFromReportToReport) {
    ObjectIds ids(seconds(60), 100);
    const auto first = ids.report("m", number("15"), seconds(10));
    EXPECT_EQ(first.since, seconds(10));
    const auto other = ids.report("m", number("16"), seconds(10));
    EXPECT_NE(other.id, first.id);
    const auto again = ids.report("m", number("15"), seconds(11));
    EXPECT_EQ(again.id, first.id);
    EXPECT_EQ(again.since, seconds(10));
    EXPECT_EQ(ids.find("m", number("15")), first.id);
    EXPECT_EQ(ids.find("m", number("17")), std::nullopt);
}

TEST(ObjectIds, DoNotCollideWhateverTheNames) {
    ObjectIds ids(seconds(60), 100'000);
    std::set<std::int32_t> given;
    std::size_t count = 0;
    const auto add = [&](const std::string& module, const ObjectName& name) {
        given.insert(ids.report(module, name, seconds(1)).id);
        ++count;
    };
    // Equal in their lower 32 bits, or with equal text once module and id stand together.
    for (const char* id : {"1", "4294967297", "8589934593", "-4294967295", "18446744073709551617",
                           "123456789012345678901234567890", "a", "1a"}) {
        add("", number(id));
        add("m", number(id));
        add("m1", number(id));
    }
    add("", uuid("1"));
    add("", uuid("m1"));
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        add("m", number(std::to_string(random())));
    }
    EXPECT_EQ(given.size(), count);
    EXPECT_EQ(ids.size(), count);
    EXPECT_GT(*given.begin(), 0);
}

TEST(ObjectIds, OfAUuidAreThoseOfAllModules) {
    ObjectIds ids(seconds(60), 100);
    const auto here = ids.report("a", {"12", "X"}, seconds(1)).id;
    EXPECT_EQ(ids.report("b", {"3", "X"}, seconds(1)).id, here);
    EXPECT_EQ(ids.report("c", uuid("X"), seconds(1)).id, here);
    EXPECT_EQ(ids.report("b", number("3"), seconds(2)).id, here);
    EXPECT_EQ(ids.report("a", number("12"), seconds(2)).id, here);
    EXPECT_NE(ids.report("c", number("12"), seconds(2)).id, here);
    EXPECT_EQ(ids.size(), 2);
}

TEST(ObjectIds, PassToTheObjectOfTheUuid) {
    ObjectIds ids(seconds(60), 100);
    const auto linked = ids.report("a", uuid("X"), seconds(1)).id;
    ids.report("b", number("3"), seconds(1));
    // Now it turns out who number 3 is.
    EXPECT_EQ(ids.report("b", {"3", "X"}, seconds(2)).id, linked);
    EXPECT_EQ(ids.report("b", number("3"), seconds(2)).id, linked);
    EXPECT_EQ(ids.size(), 1);
}

TEST(ObjectIds, OfAReusedNumberWithAnotherUuidAreNew) {
    ObjectIds ids(seconds(60), 100);
    const auto first = ids.report("a", {"3", "X"}, seconds(1)).id;
    const auto second = ids.report("a", {"3", "Y"}, seconds(2)).id;
    EXPECT_NE(second, first);
    EXPECT_EQ(ids.find("a", number("3")), second);
    EXPECT_EQ(ids.find("a", uuid("X")), first);
}

TEST(ObjectIds, HoldOneNumberOfAModuleOnly) {
    ObjectIds ids(seconds(60), 100);
    const auto id = ids.report("a", uuid("X"), seconds(0)).id;
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(ids.report("a", {std::to_string(i), "X"}, seconds(1)).id, id);
    }
    EXPECT_EQ(ids.find("a", number("998")), std::nullopt);
    EXPECT_EQ(ids.find("a", number("999")), id);
}

TEST(ObjectIds, RemainWhenTheNameChanges) {
    ObjectIds ids(seconds(60), 100);
    const auto id = ids.report("a", number("3"), seconds(1)).id;
    ids.rename("a", number("3"), number("30"));
    EXPECT_EQ(ids.find("a", number("3")), std::nullopt);
    const auto known = ids.report("a", number("30"), seconds(2));
    EXPECT_EQ(known.id, id);
    EXPECT_EQ(known.since, seconds(1));
    EXPECT_NE(ids.report("a", number("3"), seconds(2)).id, id);

    // An object of the new name is forgotten.
    const auto other = ids.report("a", number("40"), seconds(2)).id;
    ids.rename("a", number("30"), number("40"));
    EXPECT_EQ(ids.find("a", number("40")), id);
    EXPECT_NE(id, other);
    EXPECT_EQ(ids.size(), 2);

    ids.rename("a", number("99"), number("40"));
    EXPECT_EQ(ids.find("a", number("40")), id);
    ids.rename("a", number("40"), number("40"));
    EXPECT_EQ(ids.find("a", number("40")), id);
    // From a number to a number with a UUID, and on to another UUID.
    ids.rename("a", number("40"), {"41", "U"});
    EXPECT_EQ(ids.find("b", uuid("U")), id);
    ids.rename("a", {"41", "U"}, {"42", "V"});
    EXPECT_EQ(ids.find("b", uuid("U")), std::nullopt);
    EXPECT_EQ(ids.find("b", uuid("V")), id);
    EXPECT_EQ(ids.find("a", number("42")), id);
}

TEST(ObjectIds, ForgetWhatIsGone) {
    ObjectIds ids(seconds(60), 100);
    const auto gone = ids.report("a", {"3", "X"}, seconds(1)).id;
    ids.forget("a", number("3"));
    EXPECT_EQ(ids.size(), 0);
    EXPECT_EQ(ids.find("a", uuid("X")), std::nullopt);
    EXPECT_NE(ids.report("a", number("3"), seconds(2)).id, gone);
    ids.forget("a", number("77"));
    EXPECT_EQ(ids.size(), 1);
}

TEST(ObjectIds, ForgetWhatIsNotReported) {
    ObjectIds ids(seconds(60), 100);
    const auto lost = ids.report("a", number("1"), seconds(100)).id;
    const auto kept = ids.report("a", number("2"), seconds(100)).id;
    ids.sweep(seconds(100));
    ids.report("a", number("2"), seconds(150));
    ids.sweep(seconds(160));
    EXPECT_EQ(ids.find("a", number("1")), lost);
    ids.sweep(seconds(161));
    EXPECT_EQ(ids.find("a", number("1")), std::nullopt);
    EXPECT_EQ(ids.find("a", number("2")), kept);
    // A clock that is set back forgets what was far in its future.
    ids.sweep(seconds(20));
    EXPECT_EQ(ids.size(), 0);
}

TEST(ObjectIds, AreForSoManyObjectsAtATime) {
    ObjectIds ids(seconds(60), 3);
    const auto first = ids.report("a", number("1"), seconds(1)).id;
    ids.report("a", number("2"), seconds(2));
    ids.report("a", number("3"), seconds(3));
    EXPECT_EQ(ids.report("a", number("1"), seconds(4)).id, first);
    ids.report("a", number("4"), seconds(5));
    EXPECT_EQ(ids.size(), 3);
    EXPECT_EQ(ids.find("a", number("2")), std::nullopt);
    EXPECT_EQ(ids.find("a", number("1")), first);
}

// Any order of operations against a plain model: names lead to the object that was last given them,
// and no two objects share an id.
TEST(ObjectIds, AgreeWithAPlainModel) {
    std::mt19937 random(11);
    const auto anyName = [&] { return number(std::to_string(random() % 12)); };
    ObjectIds ids(seconds(1'000'000), 1000);
    std::map<std::string, std::int32_t> model;
    for (int i = 0; i < 20'000; ++i) {
        const ObjectName name = anyName();
        const auto known = model.find(name.id);
        switch (random() % 4) {
            case 0: {
                const ObjectName to = anyName();
                ids.rename("m", name, to);
                if (known != model.end() && name.id != to.id) {
                    model[to.id] = known->second;
                    model.erase(name.id);
                }
                break;
            }
            case 1:
                ids.forget("m", name);
                model.erase(name.id);
                break;
            default: {
                const auto id = ids.report("m", name, milliseconds(i)).id;
                if (known != model.end()) {
                    ASSERT_EQ(id, known->second);
                } else {
                    for (const auto& [other, used] : model) {
                        ASSERT_NE(id, used);
                    }
                    model[name.id] = id;
                }
            }
        }
        ASSERT_EQ(ids.size(), model.size());
    }
}

}  // namespace
}  // namespace Veskar::Live
