"""Simulated memory cards and sticks: file systems on loop devices with limited speed."""

import os
import subprocess
from contextlib import ExitStack, contextmanager, suppress
from pathlib import Path

GROUP = "orvelin-bench"


class NoCard(Exception):
    """Raised if this machine can't simulate a card; says why."""


def call(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.strip()


def loop_device(*arguments):
    """A new loop device, and its number."""
    path = call("losetup", "--find", "--show", *arguments)
    number = os.stat(path).st_rdev
    return path, f"{os.major(number)}:{os.minor(number)}"


class Group:
    """A control group that limits its processes' memory, and the speed of devices for them."""

    def __init__(self):
        root = Path("/sys/fs/cgroup")
        if (root / "blkio").exists():  # version 1
            self.folders = [root / "blkio" / GROUP, root / "memory" / GROUP]
            self.speed = self.folders[0] / "blkio.throttle.read_bps_device"
            self.memory = self.folders[1] / "memory.limit_in_bytes"
            # The kernel writes for all processes, so only the root group has an effect.
            self.write_speed = root / "blkio/blkio.throttle.write_bps_device"
        else:
            if "io" not in (root / "cgroup.controllers").read_text().split():
                raise NoCard("the kernel has no block controller")
            (root / "cgroup.subtree_control").write_text("+io +memory")
            self.folders = [root / GROUP]
            self.speed, self.memory = root / GROUP / "io.max", root / GROUP / "memory.max"
            self.write_speed = self.speed
        for folder in self.folders:
            folder.mkdir(exist_ok=True)

    def limit(self, device, bytes_per_second, memory):
        key = "rbps=" if self.speed.name == "io.max" else ""
        self.speed.write_text(f"{device} {key}{bytes_per_second}")
        self.memory.write_text(str(memory))

    def limit_writing(self, device, bytes_per_second):
        """Limits the speed of writing to a device; 0 removes the limit."""
        if self.write_speed.name == "io.max":
            self.write_speed.write_text(f"{device} wbps={bytes_per_second or 'max'}")
        else:
            self.write_speed.write_text(f"{device} {bytes_per_second}")

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
            self.loop, self.device = loop_device(self.image)
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


@contextmanager
def stick(work, speed=None):
    """The folder of an empty stick, and its control group. `speed`, in MB/s, limits writing.

    The stick is a loop device with direct I/O and a short queue, on another one with limited speed.
    A limited loop device alone would never make a writer wait.
    """
    if os.geteuid() != 0:
        raise NoCard("only root can mount one")
    image, folder = work / "stick", work / "stick.mounted"
    with ExitStack() as cleanup:
        try:
            group = Group()
            cleanup.callback(group.remove)
            folder.mkdir(exist_ok=True)
            cleanup.callback(folder.rmdir)
            call("truncate", "-s", "4G", image)
            cleanup.callback(image.unlink)
            lower, number = loop_device(image)
            cleanup.callback(call, "losetup", "--detach", lower)
            upper, upper_number = loop_device("--direct-io=on", lower)
            cleanup.callback(call, "losetup", "--detach", upper)
            queue = Path(f"/sys/dev/block/{upper_number}/queue")
            (queue / "nr_requests").write_text("4")
            (queue / "max_sectors_kb").write_text("120")
            call("mkfs.ext4", "-q", upper)
            call("mount", upper, folder)
            cleanup.callback(call, "umount", "--lazy", folder)  # a killed process may still use it
            if speed:
                group.limit_writing(number, speed * 1_000_000)
                cleanup.callback(group.limit_writing, number, 0)
        except (OSError, subprocess.CalledProcessError) as error:
            raise NoCard(getattr(error, "stderr", "") or error) from error
        yield folder, group
