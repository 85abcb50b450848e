// SPDX-License-Identifier: Apache-2.0
// A thread that has not waited for anything yet.
#pragma once

#include "net/WaitBudget.h"

namespace VeskarTest {

/// Forgets what earlier tests of this program have waited for.
struct FreshBudget {
    FreshBudget() { Veskar::WaitBudget::ofThisThread() = {}; }
};

}  // namespace VeskarTest
