// SPDX-License-Identifier: Apache-2.0
// Prelude of the first example: tracks from a host's sensors, and a use of the fused tracks.
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
