// Saves, shows and enables schemes with Chinese names as a JScript client does, with containers of its own:
//   cscript scheme_life.js ACCOUNT
// Prints a line for each check and, last, how many held.
var dsn = "Data Source=" + WScript.Arguments(0) + ";AppUser=1001";
var passed = 0, failed = 0;

function check(what, found, wanted) {
  var held = String(found) == String(wanted);
  if (held) passed++; else failed++;
  WScript.Echo((held ? "ok     " : "FAILED ") + what + (held ? "" : ": " + escape(String(found)) + ", not " + escape(String(wanted))));
}

// A list and a map that are the script's own and answer to the members of Vector and Dictionary.
function List() {
  var items = [];
  this.LBound = function () { return 1; };
  this.UBound = function () { return items.length; };
  this.Size = this.UBound;
  this.Item = function (index) { return items[index - 1]; };
  this.Add = function (value) { items.push(value); };
  this.Clear = function () { items = []; };
}
function listOf(value) { var list = new List(); list.Add(value); return list; }

function newMap(entries) {
  var map = new ActiveXObject("TALMRebateRuleMgr.Dictionary");
  for (var key in entries) map.Value(key) = entries[key];
  return map;
}

var mgr = new ActiveXObject("TALMRebateRuleMgr.BaseInfoMgr");
var rules = new ActiveXObject("TALMRebateRuleMgr.RebateRuleMgr");

function typeRow(type) {
  for (var each = new Enumerator(mgr.LoadRebateTypeData(dsn, 24)); !each.atEnd(); each.moveNext()) {
    if (each.item().Value("FRebateType") == type) return each.item();
  }
  return null;
}

function save(name, goods) {
  var head = newMap({FSchemeID: 0, FSchemeName: name, FNote: "\u8fd4\u5229'\ud83d\ude00"});
  var row = newMap({FZH: 0});
  row.Value("FItemIDs") = listOf(newMap({FRowID: 1, FItemID: goods, FUnitID: 1, FShowName: "\u8309\u8389\u9999\u7682"}));
  row.Value("FRebateRates") = listOf(newMap({FRowID: 1, FRebateRate: 3.5, FIndex: 1}));
  var orgs = listOf(newMap({FRowID: 0, FItemClassID: 8, FItemID: 801, FShowName: "\u4e0a\u6d77"}));
  var ranges = listOf(newMap({FLowerLimit: 0, FUpperLimit: 20000}));
  return mgr.SaveOneSchemeData(dsn, typeRow(2041), head, ranges, orgs, listOf(row));
}

var name = "\u6d17\u62a4\u5546\u54c1\u91c7\u8d2d\u8fd4\u5229";
var answer = save(name, 401);
check("a scheme of the script's own lists is saved", answer.Value("OK"), true);
answer = save("\u91cd\u590d", 401);
check("one that overlaps is refused", answer.Value("OK"), false);
check("the overlapped scheme is named", answer.Value("Repeat").Item(1).Value("FSchemeName"), name);
check("the name is taken", mgr.ExistsSchemeName(dsn, 0, name), true);
check("another isn't", mgr.ExistsSchemeName(dsn, 0, "\u65e0"), false);

var list = mgr.LoadSchemeListData(dsn, newMap({RebateClassType: 24, SchemeName: "\u6d17\u62a4"}));
check("the list finds it by a part of its name", list.Size, 1);
check("with its name", list(1).Value("FSchemeName"), name);
var id = Number(list(1).Value("FSchemeID"));

var scheme = newMap({});
check("it is shown", mgr.LoadSchemeRowData(dsn, id, scheme), true);
check("with its note", scheme.Value("SchemeMain").Value("FNote"), "\u8fd4\u5229'\ud83d\ude00");
var goods = scheme.Value("AllItemsRS");
goods.Filter = "FItemID=401";
check("its goods by a filter", goods.RecordCount, 1);
check("their id", goods.Fields("FItemID").Value, 401);

// Ranges come back into the script's own list, which the call replaces.
mgr.SaveSchemeData(dsn, 0, "\u8868\u5355", 2041, 1, "802", listOf(newMap({FLower: 0, FUpper: 1000})),
                   listOf(newMap({FItemID: 403, FOrgID: 802, FRebateCount: 1, FRebateRate: 2.25, FUnitID: 1, FCheckItemID: 0})), "");
var found = mgr.LoadSchemeListData(dsn, newMap({RebateClassType: 24, Status: 2, SchemeName: "\u8868\u5355"}));
var form = Number(found(1).Value("FSchemeID"));
var bands = listOf(newMap({old: 1})), rows = new List();
check("a form is viewed", mgr.ViewSchemeData(dsn, form, "", 0, 0, "", bands, rows, ""), true);
check("its bands fill the script's list", bands.UBound(), 1);
check("with their limits", Number(bands.Item(1).Value("FUpper")), 1000);
check("its rows, too", Number(rows.Item(1).Value("FRebateRate")), 2.25);

var own = new ActiveXObject("TALMRebateRuleMgr.Vector");
mgr.ViewSchemeData(dsn, form, "", 0, 0, "", own, rows, "");
check("its bands fill a Vector, too", own.Size, 1);

check("it is disabled", mgr.EnableScheme(dsn, id, false), true);
var forbidden = rules.GetForbidSchemeList(dsn, 24), names = "";
for (; !forbidden.EOF; forbidden.MoveNext()) names += forbidden("FSchemeName").Value + ";";
check("the forbidden schemes name it", names.indexOf(name) >= 0, true);
check("both are deleted", mgr.DelSchemeData(dsn, id + "," + form), true);

var raised = null;
try { mgr.UpdateBatch(dsn, "no array"); } catch (error) { raised = error; }
check("an error is raised", raised != null && (raised.number & 0xFFFF), 13);
WScript.Echo(passed + " held, " + failed + " failed");
