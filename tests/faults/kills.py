"""Kills the tool at random moments: kills.py TOOL N. What was acknowledged stands, everything else is whole or absent."""

import json
import os
import random
import shutil
import sys
import tempfile
import time

from tool import Calls, Tool, scheme

HEADS = """select s.FSchemeID, s.FSchemeName,
 (select count(*) from t_FL_RebateRange r where r.FSchemeID=s.FSchemeID) as Ranges,
 (select count(*) from t_FL_AllOrgs o where o.FSchemeID=s.FSchemeID) as Orgs,
 (select count(*) from t_FL_AllItems i where i.FSchemeID=s.FSchemeID) as Items,
 (select count(*) from t_FL_RebateRule u where u.FSchemeID=s.FSchemeID) as Rules
 from t_FL_SchemeList s where s.FEnable=1"""
ORPHANS = """select count(*) as Orphans from t_FL_RebateRule u
 where not exists (select 1 from t_FL_SchemeList s where s.FSchemeID=u.FSchemeID)"""
WHOLE = {"Ranges": 2, "Orgs": 1, "Items": 2, "Rules": 2}


class Saving:
    """Saves in one process after another, each killed while it saves; a scheme in three is replaced over and over."""

    def __init__(self, tool, folder):
        self.tool = tool
        self.dsn = f"Data Source={folder}/saving.db;AppUser=1001"
        self.acknowledged = {}  # the id of the stored scheme by its organisation
        self.sent = 0
        tool.run("init", f"{folder}/saving.db", "--sample")

    def kill_one(self):
        calls = Calls(self.tool, self.dsn)
        until = time.monotonic() + random.uniform(0.005, 0.06)
        while time.monotonic() < until - 0.004:
            self.save(calls)
        # The last one is in flight when the process ends.
        organisation = self.next()
        self.ask_and_kill(calls, scheme(f"s{organisation}", organisation, self.acknowledged.get(organisation, 0)))
        return self.wrong(organisation)

    def next(self):
        self.sent += 1
        return 1000 + (self.sent if self.sent % 3 else 0)

    def save(self, calls):
        organisation = self.next()
        answer = calls.ask(scheme(f"s{organisation}", organisation, self.acknowledged.get(organisation, 0)))
        if not answer or answer["result"]["OK"] is not True:
            raise RuntimeError(f"A save failed: {answer}")
        self.acknowledged[organisation] = answer["scheme"]

    def ask_and_kill(self, calls, request):
        calls.process.stdin.write(json.dumps(request) + "\n")
        calls.process.stdin.flush()
        time.sleep(random.uniform(0, 0.004))
        calls.kill()
        calls.end()

    def told(self):
        return f"{self.sent} saves, "

    def wrong(self, in_flight):
        """What is wrong now; empty where nothing is. The scheme in flight may stand in place of the one that it replaces."""
        stored = {row["FSchemeName"]: row for row in self.tool.rows(self.dsn, HEADS)}
        for organisation, number in self.acknowledged.items():
            row = stored.pop(f"s{organisation}", None)
            if row is None:
                return f"scheme {number} of {organisation} is lost"
            if row["FSchemeID"] != number and organisation != in_flight:
                return f"{organisation} has scheme {row['FSchemeID']} in the place of {number}"
            if any(row[part] != count for part, count in WHOLE.items()):
                return f"half a scheme: {row}"
            self.acknowledged[organisation] = row["FSchemeID"]
        for name, row in stored.items():
            if name != f"s{in_flight}" or any(row[part] != count for part, count in WHOLE.items()):
                return f"a scheme that nobody stored, or half of one: {row}"
            self.acknowledged[in_flight] = row["FSchemeID"]
        orphans = self.tool.rows(self.dsn, ORPHANS)[0]["Orphans"]
        return f"{orphans} rules without a scheme" if orphans else ""


class Verb:
    """A verb that makes or fills an account, killed somewhere on its way."""

    def __init__(self, tool, folder, name):
        self.tool = tool
        self.folder = os.path.join(folder, name)
        self.name = name
        os.mkdir(self.folder)
        self.source = os.path.join(self.folder, "source.db")
        tool.run("init", self.source, "--sample")
        self.target = os.path.join(self.folder, "target.db")
        self.csv = os.path.join(self.folder, "goods.csv")
        with open(self.csv, "w", encoding="utf-8") as file:
            file.write("FNumber,FName\n")
            file.writelines(f"K{i:05},Goods {i}\n" for i in range(3000))
        self.source_before = tool.fingerprint(self.source)
        started = time.monotonic()
        tool.run(*self.command())
        self.seconds = time.monotonic() - started
        self.done = tool.fingerprint(self.target)

    def command(self):
        self.clear()
        return {
            "init": ["init", self.target, "--sample"],
            "import": ["import", "goods", self.csv, "--dsn", self.target],
            "copy": ["copy", self.source, self.target],
            "backup": ["backup", self.target, "--dsn", self.source],
        }[self.name]

    def told(self):
        return ""

    def clear(self):
        for entry in os.listdir(self.folder):
            if entry.startswith("target"):
                os.remove(os.path.join(self.folder, entry))
        if self.name == "import":
            shutil.copy(self.source, self.target)

    def kill_one(self):
        process = self.tool.start(*self.command())
        time.sleep(random.uniform(0, self.seconds * 1.1))
        process.kill()
        process.wait()
        if self.tool.fingerprint(self.source) != self.source_before:
            return "the source has changed"
        if not os.path.exists(self.target):
            return "" if self.name != "import" else "the account is gone"
        left = self.tool.fingerprint(self.target)
        untouched = self.name == "import" and left == self.source_before
        return "" if untouched or left == self.done else "half of it is there"


def run(name, subject, times):
    failures = 0
    for number in range(1, times + 1):
        wrong = subject.kill_one()
        if wrong:
            failures += 1
            print(f"{name}, kill {number}: {wrong}", flush=True)
        if sys.stderr.isatty():
            print(f"\r{name}: {number} of {times}", end="", file=sys.stderr, flush=True)
    if sys.stderr.isatty():
        print("\r", end="", file=sys.stderr)
    print(f"{name}: {times} kills, {subject.told()}{failures} failures", flush=True)
    return failures


def main():
    tool, times = Tool(os.path.abspath(sys.argv[1])), int(sys.argv[2])
    seed = random.randrange(1 << 32)
    random.seed(seed)
    print(f"seed {seed}", flush=True)
    with tempfile.TemporaryDirectory(prefix="rebate-kills-") as folder:
        failures = run("save", Saving(tool, folder), times)
        for name in ("init", "import", "copy", "backup"):
            failures += run(name, Verb(tool, folder, name), max(times // 10, 1))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
