"""What the packages put on a machine, installed from the build into a folder of the test."""

import os
import pathlib
import subprocess

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["VEMO_BUILD"])
PACKAGING = SOURCE / "packaging"
CONFIGURED = BUILD / "packaging"
PROGRAMS = ("vemo", "vemo-shape", "vemo-service")


def install(folder):
    """Both packages' files below the folder, as cpack takes them."""
    for component in ("vemo", "vemo-service"):
        subprocess.run(["cmake", "--install", BUILD, "--component", component, "--prefix", folder, "--strip"],
                       check=True, stdout=subprocess.DEVNULL)
    return pathlib.Path(folder)


def elf_files(folder):
    """Everything below it that the loader can load, whatever it is called."""
    files = [file for file in sorted(pathlib.Path(folder).rglob("*")) if file.is_file() and not file.is_symlink()]
    return [file for file in files if file.read_bytes()[:4] == b"\x7fELF"]


def output_of(*command, **options):
    """Of a tool that tells by its status or by what it prints that something is wrong."""
    result = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False,
                            stdin=subprocess.DEVNULL, **options)
    return result.returncode, result.stdout + result.stderr
