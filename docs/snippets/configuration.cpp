// SPDX-License-Identifier: Apache-2.0
// Around the loading of files: what is loaded goes on.
void use(const Veskar::Config&, const Veskar::Camera&) {}

int main() {
    // snippet
    use(config, camera);
}
