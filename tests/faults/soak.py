"""Mixes all operations from several processes and threads: soak.py TOOL MINUTES. No two enabled schemes cover the same
ground, no row is without its scheme, no call fails, and memory, files, threads and time stay bounded."""

import json
import os
import random
import sys
import tempfile
import threading
import time

from tool import Calls, Tool, scheme

PROCESSES = 4
THREADS = 3
SLOWEST_CALL = 25  # seconds: a writer waits up to 20 for another one
GROWTH = {"kilobytes": 60_000, "files": 16, "threads": 4}

# What may stand: a form that replaces another one leaves its rows, and what a request names may be unknown.
ALLOWED = {"ghost", "link", "unknown", "position", "range"}


def operations():
    """The requests of the fault tests, but for batches and for what enables schemes beside others."""
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "operations.jsonl")
    with open(path, encoding="utf-8") as lines:
        requests = [json.loads(line) for line in lines]
    for request in requests:
        # A form takes the place of a form, and here nobody knows which ids are forms.
        if request["op"] == "BaseInfoMgr.SaveSchemeData":
            request["args"]["SchemeID"] = 0
    return [{"op": one["op"], "args": one["args"], "tell": ["failure"]} for one in requests
            if one["op"] not in ("BaseInfoMgr.UpdateBatch", "RebateRuleMgr.UnForbidSchemeList")]


def batch():
    """Statements with a temporary table of a name that comes once."""
    name = f"#soak{random.randrange(1 << 40)}"
    texts = [f"select FItemID into {name} from t_Item", f"select count(*) from {name}", f"drop table {name}"]
    return {"op": "BaseInfoMgr.UpdateBatch", "args": {"SQLBatch": texts}}


def new_scheme():
    """A scheme of a few suppliers and goods, so that many overlap."""
    goods = random.sample(range(401, 413), random.randint(1, 3))
    return scheme(f"soak {random.randrange(1 << 40)}", random.randint(801, 812), goods=goods)


class Client(threading.Thread):
    """A process of served calls that asks for one thing after another until the time is up."""

    def __init__(self, tool, dsn, until):
        super().__init__()
        self.calls = Calls(tool, dsn)
        self.until = until
        self.random = random.Random(random.random())
        self.requests = operations()
        self.asked = 0
        self.slowest = 0.0
        self.problems = []
        self.first = None

    def run(self):
        try:
            while time.monotonic() < self.until and not self.problems:
                self.ask()
        except Exception as error:  # the main thread tells it
            self.problems.append(repr(error))

    def request(self):
        kind = self.random.random()
        made = new_scheme() if kind < 0.3 else batch() if kind < 0.4 else dict(self.random.choice(self.requests))
        made["thread"] = str(self.random.randrange(THREADS))
        return made

    def ask(self):
        request = self.request()
        started = time.monotonic()
        answer = self.calls.ask(request)
        self.slowest = max(self.slowest, time.monotonic() - started)
        self.asked += 1
        if answer is None:
            self.problems.append(f"the process is gone, at {json.dumps(request, ensure_ascii=False)}")
        elif "error" in answer or self.failed_for_a_reason(answer):
            self.problems.append(f"{json.dumps(answer, ensure_ascii=False)} to {json.dumps(request, ensure_ascii=False)}")
        if self.asked == 500:
            self.first = self.held()

    @staticmethod
    def failed_for_a_reason(answer):
        """Whether it failed other than in the component's own words: what a request names may be gone by now."""
        failure = answer.get("failure")
        return failure and failure["number"] < 0

    def held(self):
        """What the process holds now."""
        process = f"/proc/{self.calls.process.pid}"
        with open(f"{process}/status", encoding="ascii") as lines:
            status = dict(line.split(":", 1) for line in lines)
        return {"kilobytes": int(status["VmRSS"].split()[0]), "files": len(os.listdir(f"{process}/fd")),
                "threads": int(status["Threads"])}

    def end(self):
        self.join()
        if self.first:
            held = self.held()
            for what, most in GROWTH.items():
                if held[what] - self.first[what] > most:
                    self.problems.append(f"{what} grew from {self.first[what]} to {held[what]}")
        if self.slowest > SLOWEST_CALL:
            self.problems.append(f"a call took {self.slowest:.1f} s")
        if self.calls.end() != 0 and not self.problems:
            self.problems.append("the process ended with a failure")


def wrong(tool, dsn):
    """What `rebate verify` finds that must not be."""
    findings = json.loads(tool.run("verify", "--json", "--dsn", dsn, statuses=(0, 1)))["findings"]
    return [json.dumps(one, ensure_ascii=False) for one in findings if one["check"] not in ALLOWED]


def main():
    tool, minutes = Tool(os.path.abspath(sys.argv[1])), float(sys.argv[2])
    with tempfile.TemporaryDirectory(prefix="rebate-soak-") as folder:
        dsn = f"Data Source={folder}/soak.db;AppUser=1001"
        tool.run("init", f"{folder}/soak.db", "--sample")
        until = time.monotonic() + minutes * 60
        clients = [Client(tool, dsn, until) for _ in range(PROCESSES)]
        for client in clients:
            client.start()
        problems, looks = [], 0
        while any(client.is_alive() for client in clients):
            time.sleep(2)
            problems += wrong(tool, dsn)
            looks += 1
            if sys.stderr.isatty():
                print(f"\r{sum(client.asked for client in clients)} calls", end="", file=sys.stderr, flush=True)
        for client in clients:
            client.end()
            problems += client.problems
        problems += wrong(tool, dsn)
        size = os.path.getsize(f"{folder}/soak.db")
    for problem in problems:
        print(problem)
    print(f"{sum(client.asked for client in clients)} calls of {PROCESSES} processes with {THREADS} threads each in "
          f"{minutes:g} minutes, {looks} looks at the rows, the slowest call {max(c.slowest for c in clients):.2f} s, "
          f"the account {size // 1024} KB: {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
