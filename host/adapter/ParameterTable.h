// SPDX-License-Identifier: Apache-2.0
// The parameters of HostParameters by name, with their limits.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/HostParameters.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Veskar::Host::Internal {

/// A parameter: one number or several.
struct Parameter {
    const char* name;                    ///< of the member
    const char* meaning;                 ///< what it is, with its unit
    double* (*values)(HostParameters&);  ///< where its numbers are
    std::size_t count;                   ///< of numbers
    double least;                        ///< the smallest number
    bool isLeastAllowed;                 ///< they must be above it otherwise
    double most;                         ///< the largest number that is allowed

    /// @param value a number
    /// @return whether it is within the limits
    bool allows(double value) const {
        return (value > least || (isLeastAllowed && value == least)) && value <= most;
    }
    /// @return the limits as text: "above 0 and at most 60"
    VESKAR_HOST_EXPORT std::string limits() const;
};

/// @return all parameters, in the order of the struct
VESKAR_HOST_EXPORT const std::vector<Parameter>& parameterTable();

}  // namespace Veskar::Host::Internal
