// SPDX-License-Identifier: Apache-2.0
// Prelude of snippets with functions of a host.
// snippet

int main() {}
