#include "scheme/conflict.h"

#include "model/item_class.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

// A call that failed leaves its tables on the connection.
void DropLeftovers(Call& call) {
  for (const std::string_view table : {"#TMP_AllOrgs", "#TMP_AllItems", "#TMP_OrgJoinItem"}) {
    call.Execute(
        Statement("if object_id('tempdb..{}') is not null \r\nBegin\r\n    drop table {}\r\nEnd", table, table));
  }
}

void CreateTables(Call& call) {
  call.Execute(
      "SELECT * INTO #TMP_AllOrgs FROM t_FL_AllOrgs WHERE FID =-1\r\n"
      "SELECT * INTO #TMP_AllItems FROM t_FL_AllItems WHERE FID =-1");
}

void AppendOrganisations(const SaveRequest& request, StatementList& statements) {
  const Vector& organisations = *request.organisations;
  for (Long i = organisations.LBound(); i <= organisations.UBound(); ++i) {
    const Ref<Dictionary> organisation = RowAt(organisations, i);
    EachRowIdOf(*organisation, *request.grid_rows, [&](const Text& row_id) {
      statements.Append(Statement(
          "INSERT INTO #TMP_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\n"
          "VALUES ({},{},{},{},'')",
          request.scheme_id, row_id, ValueText(*organisation, "FItemClassID"), ValueText(*organisation, "FItemID")));
    });
  }
}

void AppendGoods(const SaveRequest& request, StatementList& statements) {
  EachGridRow(*request.grid_rows, [&](const Dictionary& grid_row) {
    EachInnerRow(grid_row, "FItemIDs", [&](const Dictionary& item) {
      statements.Append(Statement(
          "INSERT INTO #TMP_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName)\r\n"
          "VALUES ({},{},{},{},'')",
          request.scheme_id, ValueText(item, "FRowID"), ValueText(item, "FItemID"), ValueText(item, "FUnitID")));
    });
  });
}

// A row that stands for every item of its class gives way to one row for each of them.
void AppendExpansion(StatementList& statements) {
  statements.Append(
      "INSERT INTO #TMP_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) \r\n"
      "SELECT o.FSchemeID,o.FRowID,o.FItemClassID,i.FItemID,'' FROM #TMP_AllOrgs o LEFT JOIN t_Item i \r\n"
      "ON o.FItemClassID =i.FItemClassID WHERE o.FItemID =0 ");
  statements.Append("Delete From #TMP_AllOrgs Where FItemID=0");
}

void AppendPairs(StatementList& statements) {
  statements.Append(Lines(
      {"SELECT v.*, i1.FNumber as FOrgNumber,i1.FName AS FOrgName,i2.FNumber ,i2.FName Into #TMP_OrgJoinItem FROM", "(",
       "SELECT o.FItemID AS FOrgID,o.FItemClassID,i.FItemID",
       "FROM #TMP_AllOrgs o LEFT JOIN #TMP_AllItems i on o.FRowID =i.FRowID",
       "GROUP BY o.FItemID,o.FItemClassID,i.FItemID", ") v ",
       "LEFT  JOIN t_Item i1 ON v.FOrgID =i1.FItemID AND v.FItemClassID =i1.FItemClassID ",
       "LEFT  JOIN t_Item i2 ON v.FItemID =i2.FItemID AND i2.FItemClassID =4"}));
}

void FillTables(Call& call, const SaveRequest& request) {
  DropLeftovers(call);
  CreateTables(call);
  StatementList statements;
  AppendOrganisations(request, statements);
  AppendGoods(request, statements);
  AppendExpansion(statements);
  AppendPairs(statements);
  statements.Run(call);
}

Text OverlapByOrganisation(const SaveRequest& request) {
  return Statement(
      Lines({"SELECT FSchemeName,FOrgIDNew,FOrgNumber,FOrgName,  ",
             "(CASE WHEN FOrgID=0 THEN '全部' + ISNULL(FItemClassName,'')  ELSE '' END )AS FOrgRemark ", "FROM (",
             "    SELECT l.FSchemeName,v.FItemIDNew AS FOrgIDNew,j.FOrgNumber,j.FOrgName,v.FItemID AS FOrgID,"
             "c.FName as FItemClassName ",
             "    FROM ",
             "    (SELECT FSchemeID,FSchemeNo, FSchemeName FROM t_FL_SchemeList WHERE FRebateType ={}"
             " AND FSchemeID <>{} AND FEnable =1) l ",
             "    LEFT JOIN VW_FL_SchemeOrg v ON l.FSchemeID =v.FSchemeID ",
             "    LEFT JOIN t_ItemClass  c ON v.FItemClassID =c.FItemClassID ",
             "    INNER JOIN #TMP_OrgJoinItem j ON j.FOrgID=v.FItemIDNew ",
             "    GROUP BY l.FSchemeName,v.FItemIDNew,j.FOrgNumber,j.FOrgName,v.FItemID,c.FName ", ") X ",
             "ORDER BY FSchemeName,FOrgName"}),
      request.rebate_type, request.scheme_id);
}

Text OverlapByOrganisationAndGoods(const SaveRequest& request) {
  return Statement(
      Lines({"SELECT FSchemeName,FItemID,FItemNumber,FItemName,FOrgIDNew,FOrgNumber,FOrgName, ",
             "(CASE WHEN FOrgID=0 THEN '全部' + ISNULL(FItemClassName,'')  ELSE '' END )AS FOrgRemark", "FROM (",
             "    SELECT l.FSchemeName,v.FItemIDNew AS FOrgIDNew,j.FOrgNumber,j.FOrgName,v.FItemID AS FOrgID,",
             "    i.FItemID,j.FNumber AS FItemNumber,j.FName AS FItemName ,c.FName AS FItemClassName", "    FROM ",
             "    (SELECT FSchemeID,FSchemeNo, FSchemeName FROM t_FL_SchemeList WHERE FRebateType ={}"
             " AND FSchemeID <>{} AND FEnable =1) l ",
             "    LEFT JOIN VW_FL_SchemeOrg v ON l.FSchemeID =v.FSchemeID ",
             "    LEFT JOIN t_FL_AllItems i ON l.FSchemeID =i.FSchemeID ",
             "    LEFT JOIN t_ItemClass  c ON v.FItemClassID =c.FItemClassID ",
             "    INNER JOIN #TMP_OrgJoinItem j ON j.FOrgID=v.FItemIDNew AND j.FItemID=i.FItemID ",
             "    GROUP BY l.FSchemeName,v.FItemIDNew,v.FItemID,i.FItemID,j.FOrgNumber,j.FOrgName,j.FNumber,j.FName,"
             "c.FName",
             ") X", "ORDER BY FSchemeName,FOrgName,FItemNumber"}),
      request.rebate_type, request.scheme_id);
}

Text OverlapQuery(const SaveRequest& request) {
  switch (request.range_item_class) {
    case item_class::kCustomers:
    case item_class::kSuppliers:
      return OverlapByOrganisation(request);
    case item_class::kGoods:
      return OverlapByOrganisationAndGoods(request);
    default:
      Refuse("BaseInfoMgr.SaveOneSchemeData", "RangeItemClass属性无效");
  }
}

}  // namespace

bool FindConflicts(Call& call, const SaveRequest& request, Dictionary& answer) {
  FillTables(call, request);
  const RecordsetRef overlap = call.Execute(OverlapQuery(request));
  const bool found = !overlap->Eof();
  if (found) {
    answer.SetValue("OK", false);
    answer.SetValue("Err", "存在重复方案信息");
    answer.SetValue("Repeat", RecordsetToVector(overlap));
  }
  overlap->Close();
  call.Execute("DROP TABLE #TMP_AllOrgs\r\nDROP TABLE #TMP_AllItems\r\nDROP TABLE #TMP_OrgJoinItem");
  return found;
}

}  // namespace rebate
