// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/ClassWords.h"

#include <veskar/Vocabulary.h>

#include "host/reports/LabelWords.h"

#include <map>

namespace Veskar::Live {
namespace {

/// The words whose meaning is ONVIF's own; null: the vocabulary has no class for it.
const std::map<std::string_view, const std::string*>& onvifClasses() {
    static const std::map<std::string_view, const std::string*> classes{
        // tt:ObjectType
        {"Animal", &Vocabulary::animal},
        {"HumanFace", &Vocabulary::humanFace},
        {"Human", &Vocabulary::human},
        {"Bicycle", &Vocabulary::motorcycleBicycle},
        {"Vehicle", &Vocabulary::vehicle},
        {"LicensePlate", &Vocabulary::licensePlate},
        {"Bike", &Vocabulary::motorcycleBicycle},  // bicycle, motorcycle or motorbike
        {"Barcode", nullptr},
        {"Fire", nullptr},
        {"Smoke", nullptr},
        // tt:ClassType, deprecated; spelt as in the schema
        {"Face", &Vocabulary::humanFace},
        {"Vehical", &Vocabulary::vehicle},
        {"Other", &Vocabulary::unknown},
        // tt:VehicleType
        {"Bus", &Vocabulary::bus},
        {"Car", &Vocabulary::car},
        {"Truck", &Vocabulary::truck},
        {"Motorcycle", &Vocabulary::motorcycleBicycle},
        {"Others", &Vocabulary::vehicleOther}};
    return classes;
}

bool isKindOfVehicle(const std::string& className) {
    const auto group = Vocabulary::classGroups.find(className);
    return className != Vocabulary::vehicle && group != Vocabulary::classGroups.end() &&
           group->second == Vocabulary::vehicle;
}

}  // namespace

std::optional<std::string> classOf(std::string_view word) {
    const auto found = onvifClasses().find(word);
    if (found != onvifClasses().end()) {
        return found->second == nullptr ? std::nullopt : std::optional(*found->second);
    }
    return Host::Internal::meantWord(Host::Internal::WordKind::Class, word);
}

Host::Label bestClass(const std::vector<Candidate>& candidates, LeftOut& leftOut) {
    constexpr double surelySpecial = 0.5;
    Host::Label best;
    Host::Label special;
    for (const Candidate& candidate : candidates) {
        const std::optional<std::string> className = classOf(candidate.word);
        if (!className) {
            leftOut.add("Class " + candidate.word);
            continue;
        }
        if (candidate.likelihood > best.probability && *className != Vocabulary::unknown) {
            best = {*className, candidate.likelihood};
        }
        if (candidate.likelihood > special.probability && isKindOfVehicle(*className)) {
            special = {*className, candidate.likelihood};
        }
    }
    const bool isReplaced =
        best.name == Vocabulary::vehicle && special.probability >= surelySpecial;
    return isReplaced ? special : best;
}

std::vector<Candidate> candidatesFor(const Host::Label& label) {
    static const std::map<std::string, std::vector<std::string>> words{
        {Vocabulary::human, {"Human"}},
        {Vocabulary::humanFace, {"HumanFace"}},
        {Vocabulary::vehicle, {"Vehicle"}},
        {Vocabulary::car, {"Vehicle", "Car"}},
        {Vocabulary::truck, {"Vehicle", "Truck"}},
        {Vocabulary::bus, {"Vehicle", "Bus"}},
        {Vocabulary::vehicleOther, {"Vehicle"}},
        {Vocabulary::motorcycleBicycle, {"Bike"}},
        {Vocabulary::bike, {"Bike"}},
        {Vocabulary::licensePlate, {"LicensePlate"}},
        {Vocabulary::animal, {"Animal"}},
        {Vocabulary::unknown, {}}};
    const auto found = words.find(label.name);
    const std::vector<std::string> own{label.name};
    std::vector<Candidate> candidates;
    for (const std::string& word : found == words.end() ? own : found->second) {
        candidates.push_back({word, label.probability});
    }
    return candidates;
}

}  // namespace Veskar::Live
