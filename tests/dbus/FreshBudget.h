// SPDX-License-Identifier: Apache-2.0
// Resets the wait budget of the thread.
#pragma once

#include "net/WaitBudget.h"

namespace VeskarTest {

/// Clears waiting times of earlier tests in this program.
struct FreshBudget {
    FreshBudget() { Veskar::WaitBudget::ofThisThread() = {}; }
};

}  // namespace VeskarTest
