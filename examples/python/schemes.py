"""Saves a scheme, has an overlapping one refused and lists what is stored:

    python3 examples/python/schemes.py LIBRARY ACCOUNT
"""

import json
import pathlib
import sys

from rebate import RebateError, Session

EXAMPLES = pathlib.Path(__file__).resolve().parent.parent
SUPPLIERS = 24


def save(session, types, name):
    request = json.loads((EXAMPLES / name).read_text(encoding="utf-8"))
    wanted = str(request.pop("FRebateType"))  # rows hold their values as text
    row = next(row for row in types if row["FRebateType"] == wanted)
    return session.call("BaseInfoMgr.SaveOneSchemeData", SchemeConst=row, **request)


def main(library, account):
    sys.stdout.reconfigure(encoding="utf-8")
    with Session(account, library) as session:
        types = session.call("BaseInfoMgr.LoadRebateTypeData", lRebateClass=SUPPLIERS)
        for row in types:
            print("type", row["FRebateType"], row["FTypeName"])

        for name in ("supplier_goods.json", "supplier_goods_overlap.json"):
            answer = save(session, types, name)
            print("saved" if answer["OK"] else "refused: " + answer["Err"], name)
            for row in answer.get("Repeat", []):
                print("overlaps", row["FSchemeName"], row["FOrgName"], row["FItemName"])

        wanted = {"RebateClassType": SUPPLIERS, "SchemeName": "洗护"}
        for row in session.call("BaseInfoMgr.LoadSchemeListData", dct=wanted):
            print("scheme", row["FSchemeID"], row["FSchemeName"], row["FEnable"])

        try:
            session.call("BaseInfoMgr.Rebate")
        except RebateError as error:
            print("error", error.number, error)


if __name__ == "__main__":
    main(*sys.argv[1:])
