# shellcheck shell=bash
# A service with accounts, in which Ada has signed in once.
mkdir -p ~/.config/vemo-service ~/.local/share/vemo-service
/usr/bin/python3 -B - "$VEMO_SOURCE/tests/desktop" <<'PYTHON'
import pathlib
import sys
sys.path.insert(0, sys.argv[1])
from account_service import AccountService, OtherClient
folder = pathlib.Path.home() / ".local/share/vemo-service"
with AccountService(folder) as service:
    OtherClient(service).sign_in()
PYTHON
printf '[accounts]\nenabled = yes\n' >~/.config/vemo-service/vemo-service.conf
