// SPDX-License-Identifier: Apache-2.0
// Around the beginning of a host.
#include <veskar/HostApplication.h>

int main() {
    // snippet
}
