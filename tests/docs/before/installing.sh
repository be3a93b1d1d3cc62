# shellcheck shell=bash
# Somebody has come through the first steps and signed in. Vemo and its service have written what the table of files in
# the README says, and nothing else.
mkdir -p ~/.config/autostart ~/.local/state/vemo/secrets
# shellcheck disable=SC2016 # the quotes are those of the page
sed -n '/^```sh run/,/^```$/{/^```/d;p}' "$VEMO_SOURCE/docs/first-steps.md" >first-steps.sh
# shellcheck source=/dev/null
. ./first-steps.sh
. "$VEMO_SOURCE/tests/docs/after/first-steps.sh"
kill %1
wait %1 || true
vemo-service add-token >/dev/null
# What there is only with the archive, a start at login, updates, or without a keyring.
mkdir -p ~/.local/opt/vemo
touch ~/.config/autostart/brelmox.Vemo.desktop ~/.local/state/vemo/{updates.json,secrets/sealed}
printf secret | secret-tool store --label=Vemo service brelmox.Vemo account authToken
/usr/bin/python3 -B - <<'PYTHON'
import os
import pathlib
import sys
sys.path.insert(0, os.environ["VEMO_SOURCE"] + "/tests/docs")
from pages import SPAN, SOURCE, columns
told = {SPAN.findall(cell)[0] for heading, cell in columns(SOURCE / "README.md") if heading == "file" and SPAN.search(cell)}
told = {pathlib.Path(path).expanduser() for path in told if path.startswith("~/")}
assert len(told) > 10, told
assert not [path for path in told if not path.exists()], [path for path in told if not path.exists()]
written = [path for name in (".config", ".local", ".cache") for path in (pathlib.Path.home() / name).rglob("*vemo*")]
written += [path for path in pathlib.Path.home().rglob("*Vemo*")]
written = [file for path in written for file in ([path] if path.is_file() else path.rglob("*")) if file.is_file()]
assert written
untold = [file for file in written if not any(file.is_relative_to(path) for path in told)]
assert not untold, untold
PYTHON
