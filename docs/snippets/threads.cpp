// SPDX-License-Identifier: Apache-2.0
// Around the start of a host: its main loop, and what its fusion thread runs.
#include <thread>

#include <glib.h>

void fuse(const Veskar::Config&) {}

int main() {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    const Veskar::Config config{};
    // snippet
    fusionThread.join();
    g_main_loop_unref(loop);
}
