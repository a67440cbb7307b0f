#!/usr/bin/env bash
# Makes the pictures of the documents anew, from the real program in a real window: docs/pictures/*.png
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-packages.sh test
scripts/with-display.sh ./run.sh --shots 3 --screenshot docs/pictures/workbench.png
cmake --build --preset release --target guide-pictures
scripts/with-display.sh build/release/bin/guide-pictures docs/pictures
