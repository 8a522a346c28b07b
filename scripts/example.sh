#!/usr/bin/env bash
# The main job: installs the build tools when missing, builds the library, the
# command-line simulator and the tests with CMake (Release, into build/), then
# simulates examples/rc_step.tz4 for 10 ms and writes out/rc_step.csv and
# out/rc_step.svg; the simulator prints where they went.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2
build/tz4 run examples/rc_step.tz4 --time 10m --csv "$PWD/out/rc_step.csv" --plot "$PWD/out/rc_step.svg"
