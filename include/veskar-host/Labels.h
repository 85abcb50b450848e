// SPDX-License-Identifier: Apache-2.0
// What kind of object something is and which colours it has.
#pragma once

#include <string>

namespace Veskar::Host {

/// A word and how probable it is (0..1).
struct Label {
    std::string name = "unknown";  ///< see Vocabulary.h
    double probability = 0.0;      ///< 0 to 1
};

/// What an analytics may say about an object beside where it is.
struct Labels {
    Label objectClass;         ///< what it is
    Label color;               ///< of a vehicle, for example
    Label upperClothingColor;  ///< of a person
    Label lowerClothingColor;  ///< of a person
};

}  // namespace Veskar::Host
