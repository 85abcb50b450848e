// SPDX-License-Identifier: Apache-2.0
#include <veskar/Vocabulary.h>

namespace Veskar::Vocabulary {

const std::string area = "area";
const std::string road = "road";

const std::string automatic = "automatic";
const std::string minimizeFalseAlarms = "minimizeFalseAlarms";
const std::string maximizeDetections = "maximizeDetections";

const std::string human = "human";
const std::string humanHead = "human_head";
const std::string humanFace = "human_face";
const std::string hatOther = "hat_other";
const std::string missingHardhat = "missing_hardhat";
const std::string vehicle = "vehicle";
const std::string car = "car";
const std::string truck = "truck";
const std::string bus = "bus";
const std::string motorcycleBicycle = "motorcycle_bicycle";
const std::string vehicleOther = "vehicle_other";
const std::string bike = "bike";
const std::string licensePlate = "license_plate";
const std::string animal = "animal";

const std::string unknown = "unknown";

const std::set<std::string> supportedClasses = {
    human, vehicle, car, truck, bus, motorcycleBicycle, vehicleOther, bike, animal, unknown};

const std::map<std::string, std::string> classGroups = {{car, vehicle},
                                                        {truck, vehicle},
                                                        {vehicle, vehicle},
                                                        {bus, vehicle},
                                                        {motorcycleBicycle, vehicle},
                                                        {vehicleOther, vehicle},
                                                        {human, human},
                                                        {humanFace, human},
                                                        {humanHead, missingHardhat},
                                                        {hatOther, missingHardhat},
                                                        {missingHardhat, missingHardhat},
                                                        {licensePlate, licensePlate},
                                                        {animal, animal},
                                                        {unknown, unknown}};

const std::set<std::string> knownClasses = {
    human, humanHead,         humanFace,    hatOther, missingHardhat, vehicle, car,    truck,
    bus,   motorcycleBicycle, vehicleOther, bike,     licensePlate,   animal,  unknown};

const std::set<std::string> knownColors = {"beige", "black",  "blue", "brown",  "gray",
                                           "green", "orange", "pink", "purple", "red",
                                           "white", "yellow", unknown};

bool isKnownClass(const std::string& word) {
    return knownClasses.count(word) > 0;
}

bool isKnownColor(const std::string& word) {
    return knownColors.count(word) > 0;
}

}  // namespace Veskar::Vocabulary
