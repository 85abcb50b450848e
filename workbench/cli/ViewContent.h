// SPDX-License-Identifier: Apache-2.0
// What the live view of `veskar run` shows.
#pragma once

#include "live/service/RunConfiguration.h"
#include "live/view/LiveView.h"

namespace Workbench {

/// @param run what is run
/// @return the page, the scene and the explanations of its view
/// @throw InputError when this program was built without the page
Veskar::Live::ViewContent viewContentOf(const Veskar::Live::RunConfiguration& run);

}  // namespace Workbench
