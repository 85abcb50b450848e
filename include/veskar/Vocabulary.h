// SPDX-License-Identifier: Apache-2.0
// The words that tracks carry as labels, and what fusion knows about them.
#pragma once

#include <veskar/Export.h>

#include <map>
#include <set>
#include <string>

/// Labels are plain strings, compared byte by byte ("Human" is not "human"). Read-only once the
/// library is loaded; safe to read from any thread.
namespace Veskar::Vocabulary {

// Kinds of scene.
VESKAR_EXPORT extern const std::string area;  ///< "area"
VESKAR_EXPORT extern const std::string road;  ///< "road"

// Tags of the detection priority.
VESKAR_EXPORT extern const std::string automatic;            ///< "automatic"
VESKAR_EXPORT extern const std::string minimizeFalseAlarms;  ///< "minimizeFalseAlarms"
VESKAR_EXPORT extern const std::string maximizeDetections;   ///< "maximizeDetections"

// Object classes.
VESKAR_EXPORT extern const std::string human;              ///< "human", also a group
VESKAR_EXPORT extern const std::string humanHead;          ///< "human_head"
VESKAR_EXPORT extern const std::string humanFace;          ///< "human_face"
VESKAR_EXPORT extern const std::string hatOther;           ///< "hat_other"
VESKAR_EXPORT extern const std::string missingHardhat;     ///< "missing_hardhat", also a group
VESKAR_EXPORT extern const std::string vehicle;            ///< "vehicle", also a group
VESKAR_EXPORT extern const std::string car;                ///< "car"
VESKAR_EXPORT extern const std::string truck;              ///< "truck"
VESKAR_EXPORT extern const std::string bus;                ///< "bus"
VESKAR_EXPORT extern const std::string motorcycleBicycle;  ///< "motorcycle_bicycle"
VESKAR_EXPORT extern const std::string vehicleOther;       ///< "vehicle_other"
VESKAR_EXPORT extern const std::string bike;               ///< "bike"
VESKAR_EXPORT extern const std::string licensePlate;       ///< "license_plate", also a group
VESKAR_EXPORT extern const std::string animal;             ///< "animal", also a group

/// "unknown": the default of every class and colour label, and a group of its own.
VESKAR_EXPORT extern const std::string unknown;

/// The ten classes that take part in association.
VESKAR_EXPORT extern const std::set<std::string> supportedClasses;

/// The group of a class: two sensors agree when their groups are equal.
///
/// On purpose "bike" is supported and has no group, and heads and hats form the group
/// "missing_hardhat", not "human".
VESKAR_EXPORT extern const std::map<std::string, std::string> classGroups;

/// Every class above, "unknown" included. Fusion carries any other word along, but a track of
/// another class takes part in no association that asks for the class.
VESKAR_EXPORT extern const std::set<std::string> knownClasses;

/// The usual words for colours, "unknown" included: beige, black, blue, brown, gray, green, orange,
/// pink, purple, red, white, yellow. A convention between producer and consumer: fusion carries any
/// word along, and words that differ are different colours.
VESKAR_EXPORT extern const std::set<std::string> knownColors;

/// @param word a class label
/// @return whether it is one of knownClasses
VESKAR_EXPORT bool isKnownClass(const std::string& word);

/// @param word a colour label
/// @return whether it is one of knownColors
VESKAR_EXPORT bool isKnownColor(const std::string& word);

}  // namespace Veskar::Vocabulary
