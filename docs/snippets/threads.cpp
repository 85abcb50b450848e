// SPDX-License-Identifier: Apache-2.0
// Prelude of snippets from the start of a host: its main loop and its fusion thread.
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
