// SPDX-License-Identifier: Apache-2.0
// What is wrong with a configuration, and where.
#pragma once

#include <veskar/Export.h>

#include <string>

namespace Veskar {

/// One thing in a configuration's text that the fusion refuses, or does not use as it is written.
struct VESKAR_EXPORT ConfigFault {
    /// What the fusion does about it.
    enum class Effect {
        Refused,   ///< Config::parse throws
        Replaced,  ///< another value is used, which the reason names
        Ignored    ///< nothing reads it
    };

    Effect effect = Effect::Refused;  ///< what the fusion does about it
    int line = 1;        ///< from 1; of a missing key the line where its section begins
    std::string key;     ///< dotted path, as "veskarModule.gainNegative.radar"; empty: the document
    std::string value;   ///< as written, "an object" or "an array"; empty when there is none
    std::string reason;  ///< a sentence without full stop that names the value

    /// @return "veskarModule.gatingDistance (line 12): 4 is an integer where a real number is
    ///         needed: write 4.0"; without a key "line 12: " and the reason
    std::string text() const;
};

}  // namespace Veskar
