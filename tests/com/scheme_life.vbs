' Runs every operation of both classes as a VBScript client does, on an account with sample data:
'   cscript scheme_life.vbs ACCOUNT
' Prints a line for each check and, last, how many held.
Option Explicit

Dim dsn, mgr, rules, passed, failed
passed = 0
failed = 0
dsn = "Data Source=" & WScript.Arguments(0) & ";AppUser=1001"

Sub Check(what, found, wanted)
  If CStr(found) = CStr(wanted) Then
    passed = passed + 1
    WScript.Echo "ok     " & what & " = " & CStr(found)
  Else
    failed = failed + 1
    WScript.Echo "FAILED " & what & " = " & CStr(found) & ", not " & CStr(wanted)
  End If
End Sub

Function NewVector()
  Set NewVector = CreateObject("TALMRebateRuleMgr.Vector")
End Function

' A Dictionary of "key=value" texts.
Function Row(entries)
  Dim entry, at
  Set Row = CreateObject("TALMRebateRuleMgr.Dictionary")
  For Each entry In entries
    at = InStr(entry, "=")
    Row.Value(Left(entry, at - 1)) = Mid(entry, at + 1)
  Next
End Function

Function ListOf(element)
  Set ListOf = NewVector()
  ListOf.Add element
End Function

Function TypeRow(rebateType)
  Dim entry
  Set TypeRow = Nothing
  For Each entry In mgr.LoadRebateTypeData(dsn, 24)
    If entry.Value("FRebateType") = CStr(rebateType) Then Set TypeRow = entry
  Next
End Function

' Saves a scheme of supplier 801 for one goods item.
Function SaveScheme(name, goods)
  Dim gridRow, head, ranges, orgs, rows
  Set head = Row(Array("FSchemeID=0", "FSchemeName=" & name, "FNote=it's a note"))
  Set ranges = ListOf(Row(Array("FLowerLimit=0", "FUpperLimit=20000")))
  Set orgs = ListOf(Row(Array("FRowID=0", "FItemClassID=8", "FItemID=801", "FShowName=East")))
  Set gridRow = Row(Array("FZH=0"))
  Set gridRow.Value("FItemIDs") = ListOf(Row(Array("FRowID=1", "FItemID=" & goods, "FUnitID=1", "FShowName=soap")))
  Set gridRow.Value("FRebateRates") = ListOf(Row(Array("FRowID=1", "FRebateRate=3.5", "FIndex=1")))
  Set rows = ListOf(gridRow)
  Set SaveScheme = mgr.SaveOneSchemeData(dsn, TypeRow(2041), head, ranges, orgs, rows)
End Function

' The id of the scheme of that name.
Function IdOf(name)
  Dim list
  Set list = mgr.LoadSchemeListData(dsn, Row(Array("RebateClassType=24", "Status=2", "SchemeName=" & name)))
  IdOf = CLng(list(1).Value("FSchemeID"))
End Function

Sub SchemeLife()
  Dim answer, list, first, second, msg, scheme, key, keys, rs, field, names
  Set answer = SaveScheme("first", 401)
  Check "SaveOneSchemeData", answer.Value("OK"), True
  Set answer = SaveScheme("overlapping", 401)
  Check "SaveOneSchemeData of the same goods", answer.Value("OK"), False
  Check "what it overlaps", answer.Value("Repeat").Item(1).Value("FSchemeName"), "first"
  Check "SaveOneSchemeData of other goods", SaveScheme("second", 402).Value("OK"), True
  Set list = mgr.LoadSchemeListData(dsn, Row(Array("RebateClassType=24")))
  Check "LoadSchemeListData", list.Size, 2
  first = IdOf("first")
  second = IdOf("second")

  msg = ""
  Check "EnableScheme", mgr.EnableScheme(dsn, first, True), True
  Check "CheckEnableScheme", mgr.CheckEnableScheme(dsn, second, True, msg), True
  Check "its question", Len(msg) > 0, True

  Set scheme = CreateObject("TALMRebateRuleMgr.Dictionary")
  Check "LoadSchemeRowData", mgr.LoadSchemeRowData(dsn, first, scheme), True
  keys = ""
  For Each key In scheme
    keys = keys & key & " "
  Next
  Check "its parts", Trim(keys), "SchemeMain SchemeConst AllRanges AllOrgsRS AllOrgs AllRulesRS AllRowIDs AllItemsRS AllChecksRS"
  Set rs = scheme.Value("AllItemsRS")
  rs.MoveFirst
  Check "a field by name", rs("FItemID"), 401
  Check "a field of Fields", rs.Fields("FItemID").Value, 401
  names = 0
  For Each field In rs.Fields
    names = names + 1
  Next
  Check "the fields walked over", names, rs.Fields.Count

  Set rs = rules.GetForbidSchemeList(dsn, 24)
  Check "GetForbidSchemeList, rows", rs.RecordCount, 1
  Check "its scheme", rs.Fields("FSchemeName").Value, "second"
  rs.MoveNext
  Check "its end", rs.EOF, True
  rs.Close
  Check "UnForbidSchemeList", rules.UnForbidSchemeList(dsn, CStr(second)), True
  Check "GetForbidSchemeList of none", rules.GetForbidSchemeList(dsn, 24) Is Nothing, True

  Check "ExistsSchemeName", mgr.ExistsSchemeName(dsn, 0, "second"), True
  Check "CheckSchemeAllowDel", mgr.CheckSchemeAllowDel(dsn, first & "," & second), True
  Check "DelSchemeData", mgr.DelSchemeData(dsn, first & "," & second), True
  Check "LoadSchemeRowData of a scheme that is gone", mgr.LoadSchemeRowData(dsn, first, scheme), False
End Sub

Sub FormLife()
  Dim bands, rows, name, rebateType, mode, org, note, id
  Set bands = ListOf(Row(Array("FLower=0", "FUpper=1000")))
  Set rows = ListOf(Row(Array("FItemID=403", "FOrgID=802", "FRebateCount=1", "FRebateRate=2.25", "FUnitID=1", "FCheckItemID=0")))
  Check "SaveSchemeData", mgr.SaveSchemeData(dsn, 0, "form", 2041, 1, "802", bands, rows, "a note"), True
  id = IdOf("form")
  Check "ViewSchemeData", mgr.ViewSchemeData(dsn, id, name, rebateType, mode, org, bands, rows, note), True
  Check "its name", name, "form"
  Check "its type", rebateType, 2041
  Check "its note", note, "a note"
  Check "its rows", rows.Size, 1
  Check "its rate", CDbl(rows(1).Value("FRebateRate")) = 2.25, True
  Check "CheckSchemeData", mgr.CheckSchemeData(dsn, 0, 2041, 1, 802, "403"), True
  Check "DelSchemeData of a form", mgr.DelSchemeData(dsn, CStr(id)), True
End Sub

Sub GridLife()
  Dim ranges, chosen, rates, grid, id, lType
  Set ranges = ListOf(Row(Array("FLower=0", "FUpper=50000", "FIndex=1")))
  Check "SaveRebateRange", mgr.SaveRebateRange(dsn, 2040, ranges), True
  Set ranges = mgr.GetRebateRange(dsn, 2040)
  Check "GetRebateRange", ranges.Size, 1
  id = CLng(ranges.Item(1).Value("FID"))
  Check "GetRangeID", rules.GetRangeID(dsn, 2040), "," & id & ","
  Check "GetRebateRangeIndex", rules.GetRebateRangeIndex(dsn, id, 2040), 1
  Set chosen = Row(Array("1=801", "2=802"))
  Check "SaveSelectedItem", mgr.SaveSelectedItem(dsn, chosen, 2040, 1001), True
  Check "GetItemInfo", mgr.GetItemInfo(2040, 1, dsn, 1001).Size, 2
  Set rates = ListOf(Row(Array("FClassTypeID=2040", "FOrgID=801", "FItemID=0", "FAmtRangeID=" & id, "FRebateRate=1.25")))
  Check "SaveRebateRule", rules.SaveRebateRule(dsn, 2040, rates, 0, 1001), True
  Set grid = rules.GetRebateRule(dsn, 2040, 0, 1001)
  Check "GetRebateRule", grid.Item(1).Value("FRebateRate"), 1.25
  Check "GetRebateRuleByItem", rules.GetRebateRuleByItem(dsn, 2040, 801, 1001, 0).Value(CStr(id)), 1.25
  Check "DeleteItemNotInRule", mgr.DeleteItemNotInRule(dsn, 2040, False), True
  Check "the selection left", mgr.GetItemInfo(2040, 1, dsn, 1001).Size, 1
  lType = 2040
  Set rates = ListOf(Row(Array("FClassTypeID=2040", "FItemID=0", "FAmtRangeID=" & id, "FRebateRate=0.5")))
  Check "SaveAllRule", rules.SaveAllRule(dsn, lType, rates), True
End Sub

Sub Errors()
  Check "TransMode", mgr.TransMode, 2
  Check "TransMode of the other class", rules.TransMode, 2
  mgr.UpdateBatch dsn, Array("update t_User set FName = 'Boss' where FUserID = 1", "")
  Check "UpdateBatch", mgr.ExistsSchemeName(dsn, 0, "none"), False
  On Error Resume Next
  mgr.UpdateBatch dsn, Array("select * from t_None")
  Check "the error of UpdateBatch", Hex(Err.Number), "80040E14"
  Check "its source", Err.Source, "BaseInfoMgr:UpdateBatch"
  Check "its description", Err.Description, "Invalid object name 't_None'."
  Err.Clear
  mgr.NoSuchMember 1
  Check "a member that isn't there", Err.Number, 438
  Err.Clear
  mgr.TransMode 1, 2, 3
  Check "arguments that nobody takes", Err.Number, 450
  Err.Clear
  mgr.GetRebateRange dsn
  Check "an argument left out", Err.Number, 449
  Err.Clear
  mgr.GetRebateRange dsn, "no number"
  Check "an argument that doesn't convert", Err.Number, 13
  Err.Clear
  CreateObject("TALMRebateRuleMgr.Dictionary").Value("none").Add 1
  Check "a key that isn't there", Err.Number, 32811
  Err.Clear
  On Error Goto 0
End Sub

Set mgr = CreateObject("TALMRebateRuleMgr.BaseInfoMgr")
Set rules = CreateObject("TALMRebateRuleMgr.RebateRuleMgr")
SchemeLife
FormLife
GridLife
Errors
WScript.Echo passed & " held, " & failed & " failed"
