// SPDX-License-Identifier: Apache-2.0
// Class and colours of an object.
#pragma once

#include <string>

namespace Veskar::Host {

/// A label and its probability.
struct Label {
    std::string name = "unknown";  ///< see Vocabulary.h
    double probability = 0.0;      ///< 0 to 1
};

/// What a video analytics may report of an object's appearance.
struct Labels {
    Label objectClass;         ///< object class
    Label color;               ///< of a vehicle, for example
    Label upperClothingColor;  ///< of a person
    Label lowerClothingColor;  ///< of a person
};

}  // namespace Veskar::Host
