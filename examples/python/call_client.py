"""A client of `rebate call`, with nothing but what comes with Python:

    python3 examples/python/call_client.py REBATE ACCOUNT
"""

import itertools
import json
import subprocess
import sys


class Rebate:
    """One `rebate call` process: `rebate.call("BaseInfoMgr.GetRebateRange", lType=2040)`."""

    def __init__(self, program, dsn):
        self._ids = itertools.count(1)
        self._process = subprocess.Popen(
            [program, "call", "--dsn", dsn], stdin=subprocess.PIPE, stdout=subprocess.PIPE, encoding="utf-8"
        )
        # Where the account isn't there, the process ends without an answer.
        self.operations = {row["op"]: row for row in self.ask({"describe": True})["describe"]["operations"]}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.stdout.close()
        if self._process.wait() != 0:
            raise RuntimeError("rebate call failed; its standard error tells why")

    def ask(self, request):
        """The answer to a request, whole."""
        request = {"id": next(self._ids), **request}
        self._process.stdin.write(json.dumps(request, ensure_ascii=False) + "\n")
        self._process.stdin.flush()
        answer = json.loads(self._process.stdout.readline() or "{}")
        if answer.get("id") != request["id"]:
            raise RuntimeError("rebate call ended; its standard error tells why")
        return answer

    def call(self, op, **args):
        """The result of an operation; raises where it fails, also where its result alone wouldn't tell."""
        answer = self.ask({"op": op, "args": args, "tell": ["failure"]})
        error = answer.get("error") or answer["failure"]
        if error:
            raise RuntimeError(f"{op}: {error['description']}")
        return answer["result"]


def main(program, account):
    sys.stdout.reconfigure(encoding="utf-8")
    with Rebate(program, account) as rebate:
        names = [row["name"] for row in rebate.operations["BaseInfoMgr.GetRebateRange"]["args"]]
        print(len(rebate.operations), "operations; GetRebateRange takes", ", ".join(names))
        types = rebate.call("BaseInfoMgr.LoadRebateTypeData", lRebateClass=24)
        print("type", types[0]["FRebateType"], types[0]["FTypeName"])
        stored = rebate.ask(
            {
                "op": "BaseInfoMgr.SaveOneSchemeData",
                "args": {
                    "SchemeConst": types[0],
                    "SchemeMainData": {"FSchemeID": 0, "FSchemeName": "年度返利", "FNote": ""},
                    "AllRangesData": [{"FLowerLimit": 0, "FUpperLimit": 100000}],
                    "AllOrgsData": [{"FRowID": 1, "FItemClassID": 8, "FItemID": 801, "FShowName": "S001"}],
                    "AllGridRows": [{"FItemIDs": None, "FCheckItems": None, "FZH": 0,
                                     "FRebateRates": [{"FRowID": 1, "FIndex": 1, "FRebateRate": 2.5}]}],
                },
                "tell": ["scheme"],
            }
        )
        print("stored as scheme", stored["scheme"])
        try:
            rebate.call("BaseInfoMgr.LoadSchemeListData", dct={})
        except RuntimeError as error:
            print(error)


if __name__ == "__main__":
    main(*sys.argv[1:])
