"""page.py PAGE WORK: does what the blocks of the page say, in their order.

A block with a file's name after its language is written to that file. A block of the language sh is run; the block "text" that follows
it is what it must print. "sh tuesday" is run after the packages of the hosts have changed, "sh on HOST" on that host.
"""
import os
import re
import subprocess
import sys

HOSTS = ("web1", "db1", "build1")


def visible(text):
    return [line.rstrip() for line in text.rstrip().split("\n")]


def run_on(host, work, script):
    command = ["ssh", "-i", f"{work}/ssh/collector", "-o", f"UserKnownHostsFile={work}/ssh/known_hosts", "-o",
               "StrictHostKeyChecking=yes", "-o", "BatchMode=yes", f"root@{host}", script]
    return subprocess.run(command, capture_output=True, text=True, timeout=60)


def run_here(directory, script):
    return subprocess.run(["bash", "-e", "-o", "pipefail", "-c", script], cwd=directory, capture_output=True, text=True, timeout=90)


def change_packages(work):
    for host in HOSTS:
        status = subprocess.run([os.environ["ZAV_FLEET_STATUS"], host, "tuesday"], check=True, capture_output=True).stdout
        with open(f"{work}/{host}/dpkg/status", "wb") as file:
            file.write(status)


def run_units(work):
    """What the service starts, on a host; systemd must accept both units if it is there."""
    with open(f"{work}/page/zav-metrics.service", encoding="utf-8") as file:
        command = re.search(r"^ExecStart=(.*)$", file.read(), re.M)[1]
    directory = os.path.dirname(re.search(r"--output (\S+)", command)[1])
    return run_on("web1", work, f"mount -t tmpfs tmpfs /var/lib && mkdir -p {directory} && {command} && test -s {directory}/zav.prom")


def main():
    page, work = sys.argv[1:]
    with open(page, encoding="utf-8") as file:
        blocks = re.findall(r"^```(\w+) ?(.*)\n((?s:.*?))^```$", file.read(), re.M)
    printed, ran, compared = None, 0, 0
    for language, words, text in blocks:
        if language == "sh":
            if words == "tuesday":
                change_packages(work)
            on = re.fullmatch(r"on (\w+)", words)
            run = run_on(on[1], work, text) if on else run_here(f"{work}/page", text)
            if run.returncode != 0:
                sys.exit(f"{page}: status {run.returncode} of\n{text}\n{run.stdout}\n{run.stderr}")
            printed = run.stdout
            ran += 1
        elif language == "text":
            if visible(printed) != visible(text):
                sys.exit(f"{page}: expected\n{text}\nnot\n{printed}")
            compared += 1
        elif words:
            with open(f"{work}/page/{words}", "w", encoding="utf-8") as file:
                file.write(text)
        else:
            sys.exit(f"{page}: nothing is done with a block of {language}")
    units = run_units(work)
    if units.returncode != 0:
        sys.exit(f"{page}: the service's command failed: {units.stdout}{units.stderr}")
    if ran < 8 or compared < 5:
        sys.exit(f"{page}: only {ran} blocks were run and {compared} answers compared")
    print(f"{ran} blocks of the page run, {compared} answers as the page says")


main()
