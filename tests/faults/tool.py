"""The tool as programs use it: verbs, and served calls that can be killed at any moment."""

import json
import subprocess


class Tool:
    def __init__(self, path):
        self.path = path

    def run(self, *arguments, statuses=(0,)):
        """Runs a verb; its output, where it ends with one of the statuses, else a RuntimeError with what it said."""
        done = subprocess.run([self.path, *arguments], capture_output=True, text=True)
        if done.returncode not in statuses:
            raise RuntimeError(f"rebate {' '.join(arguments)}: {done.stderr.strip()}")
        return done.stdout

    def start(self, *arguments):
        """Starts a verb that may be killed."""
        return subprocess.Popen([self.path, *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def rows(self, dsn, query):
        """The rows of a query, each a dictionary."""
        return [json.loads(line) for line in self.run("sql", dsn, "--json", query).splitlines()]

    def fingerprint(self, dsn):
        """What an account holds: each table's number of rows and a sum over their numbers."""
        tables = [row["name"] for row in self.rows(dsn, "select name from sysobjects where xtype='U' order by name")]
        return {name: self.run("sql", dsn, "--json", f"select * from {name}") for name in tables}


class Calls:
    """One process of served calls."""

    def __init__(self, tool, dsn):
        self.process = subprocess.Popen([tool.path, "call", "--dsn", dsn], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)

    def ask(self, request):
        """The answer to one request, None where the process is gone."""
        try:
            self.process.stdin.write(json.dumps(request, ensure_ascii=False) + "\n")
            self.process.stdin.flush()
            line = self.process.stdout.readline()
        except (BrokenPipeError, ValueError):
            return None
        return json.loads(line) if line.endswith("\n") else None

    def kill(self):
        self.process.kill()

    def end(self):
        """Waits for its end; the exit status."""
        try:
            self.process.stdin.close()
        except BrokenPipeError:
            pass
        self.process.stdout.close()
        return self.process.wait()


def scheme(name, organisation, replaces=0, goods=(401, 402)):
    """A request that stores a scheme of goods with two bands for one supplier."""
    return {
        "op": "BaseInfoMgr.SaveOneSchemeData",
        "args": {
            "SchemeConst": {"FRebateType": 2041, "FRangeItemClass": 4},
            "SchemeMainData": {"FSchemeID": replaces, "FSchemeName": name, "FNote": ""},
            "AllRangesData": [{"FLowerLimit": 0, "FUpperLimit": 100}, {"FLowerLimit": 100, "FUpperLimit": 200}],
            "AllOrgsData": [{"FRowID": 0, "FItemClassID": 8, "FItemID": organisation, "FShowName": name}],
            "AllGridRows": [{
                "FItemIDs": [{"FRowID": 1, "FItemID": item, "FUnitID": 1, "FShowName": "g"} for item in goods],
                "FRebateRates": [{"FRowID": 1, "FRebateRate": "1.5", "FIndex": 1},
                                 {"FRowID": 1, "FRebateRate": "2.5", "FIndex": 2}],
                "FZH": 1,
            }],
        },
        "tell": ["scheme", "failure"],
    }
