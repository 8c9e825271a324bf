"""A simulated memory card: a file system on a loop device with limited speed."""

import os
import subprocess
from contextlib import contextmanager, suppress
from pathlib import Path

GROUP = "orvelin-bench"


class NoCard(Exception):
    """Raised if this machine can't simulate a card; says why."""


def call(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


class Group:
    """A control group that limits its processes' memory and the speed at which they read a device."""

    def __init__(self):
        root = Path("/sys/fs/cgroup")
        if (root / "blkio").exists():  # version 1
            self.folders = [root / "blkio" / GROUP, root / "memory" / GROUP]
            self.speed = self.folders[0] / "blkio.throttle.read_bps_device"
            self.memory = self.folders[1] / "memory.limit_in_bytes"
        else:
            if "io" not in (root / "cgroup.controllers").read_text().split():
                raise NoCard("the kernel has no block controller")
            (root / "cgroup.subtree_control").write_text("+io +memory")
            self.folders = [root / GROUP]
            self.speed, self.memory = root / GROUP / "io.max", root / GROUP / "memory.max"
        for folder in self.folders:
            folder.mkdir(exist_ok=True)

    def limit(self, device, bytes_per_second, memory):
        key = "rbps=" if self.speed.name == "io.max" else ""
        self.speed.write_text(f"{device} {key}{bytes_per_second}")
        self.memory.write_text(str(memory))

    def enter(self):
        """Adds this process to the group."""
        for folder in self.folders:
            (folder / "cgroup.procs").write_text(str(os.getpid()))

    def remove(self):
        for folder in self.folders:
            with suppress(OSError):  # a killed process may still be in it
                folder.rmdir()


class Card:
    """A card with the files of a folder."""

    def __init__(self, folder, work):
        if os.geteuid() != 0:
            raise NoCard("only root can mount one")
        self.image, self.folder = work / "card", work / "card.mounted"
        self.group = self.loop = None
        size = sum(path.stat().st_size + 4096 for path in folder.rglob("*")) * 11 // 10
        try:
            self.group = Group()
            self.image.unlink(missing_ok=True)
            call("truncate", "-s", str(size + (16 << 20)), self.image)
            call("mkfs.ext4", "-q", "-d", folder, self.image)
            self.loop = call("losetup", "--find", "--show", self.image)
            number = os.stat(self.loop).st_rdev
            self.device = f"{os.major(number)}:{os.minor(number)}"
            # A card's read-ahead. The default of a loop device is twenty times as much.
            Path(f"/sys/dev/block/{self.device}/queue/read_ahead_kb").write_text("128")
            self.folder.mkdir(exist_ok=True)
            with self.inserted(20):
                pass
        except (OSError, subprocess.CalledProcessError) as error:
            self.remove()
            raise NoCard(getattr(error, "stderr", "") or error) from error

    @contextmanager
    def inserted(self, speed, memory=1 << 20):
        """Mounts the card with an empty cache. `speed` is in MB/s, `memory` of the group in MB."""
        call("mount", "-o", "ro,noload", self.loop, self.folder)
        try:
            self.group.limit(self.device, speed * 1_000_000, memory << 20)
            yield self.folder
        finally:
            call("umount", "--lazy", self.folder)  # a killed process may still use it

    def bytes_read(self):
        """Total bytes read from the device."""
        return 512 * int(Path(f"/sys/dev/block/{self.device}/stat").read_text().split()[2])

    def remove(self):
        self.image.unlink(missing_ok=True)
        if self.folder.exists():
            self.folder.rmdir()
        if self.group:
            self.group.remove()
        if self.loop:
            call("losetup", "--detach", self.loop)
