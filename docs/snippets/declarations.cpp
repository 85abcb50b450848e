// SPDX-License-Identifier: Apache-2.0
// Around functions of a host.
// snippet

int main() {}
