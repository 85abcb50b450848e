// SPDX-License-Identifier: Apache-2.0
// Prelude of snippets with a radar report.
#include <memory>

void locate(const std::shared_ptr<Veskar::Track>& track, double range, double radarAzimuth) {
    // snippet
}

int main() {
    locate(nullptr, 0.0, 0.0);
}
