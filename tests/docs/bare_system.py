"""A Debian 12 with next to nothing, made anew in a folder, for what has to be seen outside of this machine."""

import os
import shutil
import subprocess
import sys


def on_host(*words, check=True, **options):
    """Returns: what the command printed. What it complains about is shown."""
    return subprocess.run(words, check=check, text=True, stdout=subprocess.PIPE, **options).stdout


def archive_of_debian():
    """Returns: the archive that apt of this machine uses for Debian; nothing leaves the choice to debootstrap."""
    found = on_host("apt-get", "indextargets", "--format", "$(REPO_URI)", "Created-By: Packages", "Origin: Debian")
    return found.split()[:1]


def enter_namespace(name):
    """What is mounted from here on goes away with this process, which starts once more for that. Requires: root."""
    if os.geteuid() != 0:
        sys.exit(f"{name}: needs root")
    if os.environ.get("TESK_BARE_ROOT") != "mounts":
        os.environ["TESK_BARE_ROOT"] = "mounts"
        os.execvp("unshare", ["unshare", "--mount", sys.executable, "-B", *sys.argv])


def make_system(root, packages):
    """Makes the system in root, with these packages besides the least that there can be."""
    shutil.rmtree(root, ignore_errors=True)
    root.parent.mkdir(exist_ok=True)
    log = root.with_suffix(".log")
    include = [f"--include={','.join(packages)}"] if packages else []
    with log.open("w") as output:
        words = ["/usr/sbin/debootstrap", "--variant=minbase", *include, "bookworm", root]
        done = subprocess.run([*words, *archive_of_debian()], stdout=output, stderr=output)
    if done.returncode != 0:
        sys.exit(f"debootstrap fails:\n{log.read_text()[-3000:]}")
    # The way to the archive, with proxies, is that of this machine.
    (root / "etc/apt/apt.conf.d/90machine").write_text(on_host("apt-config", "dump", "Acquire"))
    for name in ("etc/resolv.conf", "etc/hosts"):
        shutil.copy(f"/{name}", root / name)
    on_host("mount", "-t", "proc", "proc", root / "proc")
