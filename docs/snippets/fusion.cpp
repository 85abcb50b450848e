// SPDX-License-Identifier: Apache-2.0
// Around the first example: tracks that a host has got from its sensors, and what it does with the
// fused ones.
#include <memory>
#include <string>
#include <vector>

void show(int, const Veskar::StateVector&, const std::string&, double) {}

int main() {
    const double timestamp = 0.0;
    const std::vector<std::shared_ptr<Veskar::Track>> videoTracks;
    const std::vector<std::shared_ptr<Veskar::Track>> radarTracks;
    // snippet
}
