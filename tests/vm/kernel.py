# SPDX-License-Identifier: Apache-2.0
"""Debian's kernel, unpacked and not installed, as the test bed boots it.

The package is linux-image-amd64's: the cloud kernel has neither IPMI nor USB.
"""

import fcntl
import lzma
import os
import pathlib
import re
import shutil
import subprocess


class Unavailable(Exception):
    """This machine cannot provide what the test bed needs."""


def module_name(path):
    """The name that the kernel knows a module file by."""
    return path.stem.replace("-", "_")


class Kernel:
    """An unpacked kernel package."""

    def __init__(self, tree):
        self.vmlinux = tree / "vmlinux"
        self._modules = {module_name(path): path for path in tree.glob("lib/modules/**/*.ko")}

    def modules(self, names):
        """The files of these modules and of those they need, in the order to load them."""
        ordered = {}

        def add(name):
            path = self._modules[name]
            # An unpacked package has no modules.dep, but each module says itself what it needs.
            needed = re.search(rb"\0depends=([^\0]*)\0", path.read_bytes()).group(1).decode()
            for other in filter(None, needed.split(",")):
                add(other.replace("-", "_"))
            ordered[name] = path

        for name in names:
            add(name)
        return list(ordered.values())


def fetch(cache):
    """The kernel in the folder `cache`; downloaded first when it is not there."""
    cache = pathlib.Path(cache).resolve()
    cache.mkdir(parents=True, exist_ok=True)
    with open(cache / "lock", "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        tree = cache / "kernel"
        if not (tree / "vmlinux").exists():
            package = _download(cache)
            subprocess.run(["dpkg-deb", "-x", package, tree], check=True)
            package.unlink()
            _decompress(next(tree.glob("boot/vmlinuz-*")), tree / "vmlinux")
        return Kernel(tree)


def _download(cache):
    """Downloads the kernel's package into `cache` and returns its path."""
    own_lists = ["-o", f"Dir::State::Lists={cache}/apt/lists", "-o", f"Dir::Cache={cache}/apt"]
    try:
        return _download_with(cache, [])
    except subprocess.CalledProcessError:
        pass  # the machine's package lists are absent or stale; root alone could renew them
    try:
        for folder in ("apt/lists/partial", "apt/archives/partial"):
            (cache / folder).mkdir(parents=True, exist_ok=True)
        _apt("apt-get", *own_lists, "update")
        return _download_with(cache, own_lists)
    except subprocess.CalledProcessError as error:
        said = (error.stderr.strip() or "nothing").splitlines()[-1]
        raise Unavailable(f"the kernel package cannot be downloaded; apt says: {said}") from error
    finally:
        shutil.rmtree(cache / "apt", ignore_errors=True)


def _download_with(cache, options):
    about = _apt("apt-cache", *options, "--no-all-versions", "show", "linux-image-amd64")
    package = re.search(r"^Depends: (linux-image-\S+)", about, re.MULTILINE).group(1)
    _apt("apt-get", *options, "download", package, cwd=cache)
    return max(cache.glob(f"{package}_*.deb"), key=os.path.getmtime)


def _apt(*command, cwd=None):
    return subprocess.run(command, cwd=cwd, check=True, capture_output=True, text=True).stdout


def _decompress(vmlinuz, vmlinux):
    """Unpacks the kernel proper out of the self-extracting image: booting that under emulation
    would cost a second of emulated decompression each time."""
    image = vmlinuz.read_bytes()
    start = image.find(b"\xfd7zXZ\0")
    if start < 0:
        raise Unavailable(f"{vmlinuz.name} holds no xz stream")
    part = vmlinux.with_suffix(".part")
    part.write_bytes(lzma.LZMADecompressor().decompress(image[start:]))
    part.rename(vmlinux)
