// SPDX-License-Identifier: Apache-2.0
#include "Table.h"

#include <memory>

namespace Bindings {
namespace {

template <typename Value>
py::array arrayOwning(std::vector<Value> values) {
    auto kept = std::make_unique<std::vector<Value>>(std::move(values));
    const auto* data = kept->data();
    const auto size = static_cast<py::ssize_t>(kept->size());
    const py::capsule owner(kept.release(),
                            [](void* held) { delete static_cast<std::vector<Value>*>(held); });
    return py::array_t<Value>(size, data, owner);
}

}  // namespace

py::array toArray(std::vector<double> values) {
    return arrayOwning(std::move(values));
}

py::array toArray(std::vector<std::int64_t> values) {
    return arrayOwning(std::move(values));
}

void WordColumn::add(const std::string& word) {
    const auto [place, isNew] = places_.try_emplace(word, static_cast<std::int64_t>(words_.size()));
    if (isNew) {
        words_.push_back(word);
    }
    codes_.push_back(place->second);
}

py::tuple WordColumn::take() {
    places_.clear();
    return py::make_tuple(toArray(std::exchange(codes_, {})), std::exchange(words_, {}));
}

}  // namespace Bindings
