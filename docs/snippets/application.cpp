// SPDX-License-Identifier: Apache-2.0
// Prelude of snippets from the beginning of a host.
#include <veskar/HostApplication.h>

int main() {
    // snippet
}
