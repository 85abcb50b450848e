// SPDX-License-Identifier: Apache-2.0
// A minute of fusion with 32 objects that both sensors see all the time, for scripts/footprint:
// prints the heap memory of host and library. Allocations by all libraries are counted.
#include <veskar/Config.h>
#include <veskar/FusionModule.h>

#include "device/Scene.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <malloc.h>

namespace {

std::size_t live = 0;
std::size_t peak = 0;
std::size_t allocations = 0;

void* taken(void* block) {
    if (block != nullptr) {
        live += malloc_usable_size(block);
        peak = std::max(peak, live);
        ++allocations;
    }
    return block;
}

void released(void* block) {
    if (block != nullptr) {
        live -= malloc_usable_size(block);
    }
}

}  // namespace

// These definitions override those of the C library, which provides these other names for that
// purpose.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-*)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
    return taken(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) {
    return taken(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) {
    released(block);
    return taken(__libc_realloc(block, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return taken(__libc_memalign(alignment, size));
}
void free(void* block) {
    released(block);
    __libc_free(block);
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,readability-*)
}

namespace {

/// Radar and video alternate, ten frames a second each.
void run(const char* configuration) {
    const std::size_t before = live;
    const Veskar::Config config = Veskar::Config::parse(configuration);
    std::printf("peak heap while the configuration loads: %zu\n", peak - before);

    double now = 0.0;
    VeskarDevice::Scene scene({}, 1);
    Veskar::FusionModule fusion(
        config, [&now] { return std::chrono::nanoseconds(static_cast<std::int64_t>(now * 1e9)); });
    constexpr int warmUp = 200;
    constexpr int frames = 1000;
    std::size_t inCycle = 0;
    std::size_t reportCount = 0;
    std::size_t warm = 0;
    std::size_t end = 0;
    for (int frame = 1; frame <= warmUp + frames; ++frame) {
        now = 0.05 * frame;
        const Veskar::Source source = frame % 2 == 0 ? Veskar::Radar : Veskar::VideoObject;
        scene.moveTo(now);
        const auto reports = scene.report(source);
        reportCount += reports.size();
        const std::size_t allocationsBefore = allocations;
        fusion.cycle(source, now, reports);
        inCycle += allocations - allocationsBefore;
        if (frame == warmUp) {
            warm = live;
            peak = live;
            inCycle = 0;
        }
        end = live;
    }
    std::printf("frames: %d\n", warmUp + frames);
    std::printf("reports: %zu\n", reportCount);
    std::printf("system tracks: %zu\n", fusion.systemTracks.size());
    std::printf("peak heap: %zu\n", peak - before);
    std::printf("heap growth: %td\n", static_cast<std::ptrdiff_t>(end - warm));
    std::printf("allocations per frame: %.1f\n", static_cast<double>(inCycle) / frames);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: steady_run FUSION.json\n");
        return EXIT_FAILURE;
    }
    try {
        run(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "steady_run: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
