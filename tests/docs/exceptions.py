"""The commands of the documentation that aren't run as they stand: why not, and what runs them instead.

What covers one is an entry of ctest, or a script of the source tree.
"""

import collections

NotRun = collections.namedtuple("NotRun", "command reason covered_by")

AS_ROOT = "changes the system, as root"
LOGGED_IN = "needs a session of systemd's"
LONG = "builds for minutes"
ITSELF = "runs these tests, among the others"
HOURS = "takes minutes to hours as root; a short form is run"
FIGURES = "measures a release build that nothing else disturbs; a short form is run"
PICTURES = "would change what the tests compare with"

EXCEPTIONS = [NotRun(*row) for row in [
    # Building and testing
    ("./test", ITSELF, ".ci/run"),
    ("./test --quick", ITSELF, ".ci/run"),
    ("cmake --preset release", LONG, "test"),
    ("cmake --build --preset release", LONG, "test"),
    ("tools/install-dependencies", AS_ROOT, "test"),
    ("tools/install-dependencies package", AS_ROOT, "packaging_dependencies"),
    ("tools/check", "is a part of the tests of its own", "test"),
    ("tools/virtual-desktop", "is what desktop tests run in", "desktop_itself"),
    ("window_pictures --write-references", PICTURES, "window_pictures"),
    ("VEMO_PROGRAMS=$PWD/build/dev/bin tools/virtual-desktop --window-manager -- tests/desktop/test_pill.py "
     "--write-references CompositedPicturesTest BarePicturesTest", PICTURES, "desktop_pill"),

    # Installing
    ("tools/build-package", LONG, "packaging_packages"),
    ("sudo apt install ./build/packages/vemo_*.deb ./build/packages/vemo-service_*.deb", AS_ROOT, "tools/prove-package"),
    ("sudo apt remove vemo vemo-service", AS_ROOT, "tools/prove-package"),
    ("sudo apt purge", AS_ROOT, "tools/prove-package"),
    ("systemctl --user enable --now vemo-service", LOGGED_IN, "tools/prove-package"),
    ("systemctl --user daemon-reload", LOGGED_IN, "tools/prove-package"),
    ("systemctl --user restart vemo-service", LOGGED_IN, "tools/prove-package"),
    ("systemctl --user status vemo-service", LOGGED_IN, "tools/prove-package"),
    ("systemctl --user disable --now vemo-service", LOGGED_IN, "tools/prove-package"),
    ("sudo useradd --create-home vemo", AS_ROOT, "tools/prove-package"),
    ("sudo loginctl enable-linger vemo", AS_ROOT, "tools/prove-package"),
    ("sudo systemctl --user --machine=vemo@ enable --now vemo-service", AS_ROOT, "tools/prove-package"),
    ("tools/build-archive", LONG, "packaging_archive"),
    ("mkdir -p ~/.local/opt", "goes with the archive", "tools/prove-archive"),
    ("tar -C ~/.local/opt -xf build/archive/vemo-*.tar.xz", "goes with the archive", "packaging_archive"),
    ("~/.local/opt/vemo/current/bin/vemo", "goes with the archive", "packaging_archive"),
    ("cd ~/.local/opt/vemo/current", "goes with the archive", "packaging_archive"),
    ("mkdir -p ~/.local/bin ~/.local/share/applications ~/.local/share/icons/hicolor/scalable/apps", "goes with the archive",
     "packaging_archive"),
    ('ln -sf "$PWD/bin/vemo" ~/.local/bin/vemo', "goes with the archive", "packaging_archive"),
    ('ln -sf "$PWD/share/icons/hicolor/scalable/apps/brelmox.Vemo.svg" ~/.local/share/icons/hicolor/scalable/apps/',
     "goes with the archive", "packaging_archive"),
    ('sed "s,^Exec=vemo,Exec=$PWD/bin/vemo," share/applications/brelmox.Vemo.desktop', "goes with the archive",
     "packaging_archive"),

    # Releasing
    ("tools/build-release build/package -DVEMO_VERSION=1.4.0 -DVEMO_BUILD_NUMBER=57", LONG, "tools/prove-package"),
    ("tools/build-package --build build/package", LONG, "packaging_packages"),
    ("tools/build-archive --build build/package", LONG, "packaging_archive"),
    ("tools/prove-reproducible", HOURS, "packaging_reproducible"),
    ("tools/prove-package", HOURS, "packaging_packages"),
    ("tools/prove-archive", HOURS, "packaging_archive"),
    ("tools/prove-archive --suite trixie", HOURS, "packaging_archive"),

    # Figures
    ("bench/whole_path/delivery_latency.py", FIGURES, "delivery_latency"),
    ("bench/whole_path/idle_weight.py", FIGURES, "idle_weight"),
    ("bench/whole_path/soak.py", FIGURES, "desktop_soak"),
    ("bench/windows/window_memory.py", FIGURES, "window_memory"),
    ("tools/virtual-desktop --x11 -- build/release/bin/keys_latency", FIGURES, "benchmark_keys_latency"),
    ("build/release/bin/desktop_hotkey_events", FIGURES, "benchmark_desktop_hotkey_events"),
    ("build/release/bin/telemetry_track", FIGURES, "benchmark_telemetry_track"),
    ("build/release/bin/session_chunk_hold", FIGURES, "benchmark_session_chunk_hold"),
    ("build/release/bin/audio_conversion", FIGURES, "audio_conversion"),
    ("build/release/bin/audio_recording_memory", FIGURES, "audio_recording_memory"),
    ("tools/virtual-desktop --audio -- build/release/bin/audio_start_latency", FIGURES, "audio_start_latency"),
    ("tools/virtual-desktop --window-manager -- build/release/bin/pill_first_frame 300", FIGURES, "pill_first_frame"),
    ("tools/virtual-desktop --window-manager -- build/release/bin/pill_frames 60", FIGURES, "pill_frames"),
    ("tools/virtual-desktop --window-manager -- build/release/bin/window_first_frame 20", FIGURES, "window_first_frame"),
    ("tools/virtual-desktop --window-manager -- build/release/bin/window_scrolling 300", FIGURES, "window_scrolling"),
    ("service_recogniser_speed /usr/share/pocketsphinx/test/data/librivox", FIGURES,
     "benchmark_service_recogniser_speed"),
    ("service_account_cost", FIGURES, "benchmark_service_account_cost"),
    ("service_database_growth 1000 1000000", FIGURES, "benchmark_service_database_growth"),
]]
