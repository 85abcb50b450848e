// SPDX-License-Identifier: Apache-2.0
// Inputs of the transports as inputs of the service.
#pragma once

#include "live/service/Places.h"

#include <utility>

namespace Veskar::Live {

/// An input of the transport.
template <typename Kind>
class InputOf : public Input {
public:
    template <typename... Arguments>
    explicit InputOf(Arguments&&... arguments) : input_(std::forward<Arguments>(arguments)...) {}

    const InputCounters& counters() const override { return input_.counters(); }

private:
    Kind input_;
};

}  // namespace Veskar::Live
