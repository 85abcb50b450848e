# SPDX-License-Identifier: Apache-2.0
"""Nothing accumulates over many runs."""

import gc
import os
import tracemalloc

import veskar

REPLAYS = 1000


def resident():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def test_a_thousand_replays_leave_no_memory_behind(root, tmp_path):
    recording = veskar.simulate(root / "config/scenarios/perimeter.json", tmp_path / "short.jsonl",
                                duration=1.0)
    config = veskar.Config.defaults()

    def replay(count):
        for _ in range(count):
            veskar.replay(recording, config, progress=lambda fraction: None).to_bytes()
        gc.collect()

    tracemalloc.start()
    try:
        replay(REPLAYS // 10)  # what is made once
        traced, held = tracemalloc.get_traced_memory()[0], resident()
        replay(REPLAYS)
        traced_after, held_after = tracemalloc.get_traced_memory()[0], resident()
    finally:
        tracemalloc.stop()
    # Below what one object, or one line of the recording, per replay would add.
    assert traced_after - traced < 20 * REPLAYS
    assert held_after - held < 500 * REPLAYS
    print(f"{traced_after - traced} bytes of Python, {held_after - held} bytes of the process")
