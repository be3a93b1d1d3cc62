"""The real companion service, with a token that Vemo finds in the keyring."""

import pathlib
import subprocess

from vemo_program import program, store_token
from virtual_desktop import DesktopError


class RunningService:
    """One that somebody has started already, with a token of its own making."""

    def __init__(self, address, token):
        self.address = address
        self._token = token

    def __enter__(self):
        store_token(self._token)
        return self

    def __exit__(self, *_):
        pass


class CompanionService:
    """`with CompanionService(folder) as service: Vemo(service.address)`; on a free port, configured in the folder,
    with further sections where a test asks for them."""

    def __init__(self, folder, sections=""):
        self._configuration = pathlib.Path(folder) / "vemo-service.conf"
        self._sections = sections

    def __enter__(self):
        self._configuration.write_text(f"[server]\nport = 0\n{self._sections}")
        command = [program("vemo-service"), "--config", self._configuration]
        token = subprocess.run([*command, "add-token"], capture_output=True, check=True).stdout.decode().split()[-1]
        store_token(token)
        self._process = subprocess.Popen(command, stdout=subprocess.PIPE, stdin=subprocess.DEVNULL)
        line = self._process.stdout.readline().decode()
        if "http" not in line:
            raise DesktopError("the service doesn't start")
        self.address = line[line.index("http"):].split()[0].rstrip("/") + "/"
        return self

    def __exit__(self, *_):
        self._process.terminate()
        self._process.wait(120)
        self._process.stdout.close()
