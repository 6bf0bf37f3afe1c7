#include "scheme/persistence.h"

#include "platform/login/call_observer.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

Long InsertHead(Call& call, const SaveRequest& request) {
  call.Execute(Statement(
      "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,FEnable)\r\n"
      "VALUES ('0','{}',{},GETDATE(),{},'{}',1)",
      DoubleQuotes(request.name), request.rebate_type, call.UserId(), DoubleQuotes(request.note)));
  const RecordsetRef identity = call.Execute("SELECT @@identity as FSchemeIDNew");
  const Long new_id = ToLong(identity->FieldValue("FSchemeIDNew"));
  identity->Close();
  if (CallObserver* observer = TheCallObserver()) observer->StoringScheme(new_id);
  return new_id;
}

void AppendChildDeletes(Long scheme_id, StatementList& statements) {
  for (const std::string_view table :
       {"t_FL_AllItems", "t_FL_AllOrgs", "t_FL_CheckItems", "t_FL_RebateRange", "t_FL_RebateRule"}) {
    statements.Append(Statement("DELETE FROM {} WHERE FSchemeID={}", table, scheme_id));
  }
}

void AppendRanges(const Vector& ranges, Long new_id, StatementList& statements) {
  for (Long i = ranges.LBound(); i <= ranges.UBound(); ++i) {
    const Ref<Dictionary> range = RowAt(ranges, i);
    statements.Append(
        Statement("INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID)\r\nVALUES ({},{},{},{})",
                  Amount(range->Value("FLowerLimit")), Amount(range->Value("FUpperLimit")), i, new_id));
  }
}

Text CheckItemInsert(Long new_id, std::string_view row_id, std::string_view item_class, std::string_view item) {
  return Statement("INSERT INTO t_FL_CheckItems (FSchemeID,FRowID,FItemClassID,FItemID)\r\nVALUES ({},{},{},{})",
                   new_id, row_id, item_class, item);
}

// The check points of the whole scheme hang on its first organisation, where that stands in every grid row.
void AppendCheckPoints(const Dictionary& organisation, Long new_id, StatementList& statements) {
  const Ref<Dictionary> points = ObjectAs<Dictionary>(organisation.GetValue("CheckPoints", ObjectRef()));
  if (!points) return;
  for (Long p = 1; p <= points->Count(); ++p) {
    statements.Append(CheckItemInsert(new_id, ValueText(organisation, "FRowID"),
                                      ValueText(organisation, "FItemClassID"), points->Key(p)));
  }
}

void AppendOrganisations(const SaveRequest& request, Long new_id, StatementList& statements) {
  const Vector& organisations = *request.organisations;
  for (Long i = organisations.LBound(); i <= organisations.UBound(); ++i) {
    const Ref<Dictionary> organisation = RowAt(organisations, i);
    EachRowIdOf(*organisation, *request.grid_rows, [&](const Text& row_id) {
      statements.Append(
          Statement("INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\n"
                    "VALUES ({},{},{},{},'{}')",
                    new_id, row_id, ValueText(*organisation, "FItemClassID"), ValueText(*organisation, "FItemID"),
                    DoubleQuotes(ValueText(*organisation, "FShowName"))));
    });
    if (i == organisations.LBound() && StandsInEveryGridRow(*organisation)) {
      AppendCheckPoints(*organisation, new_id, statements);
    }
  }
}

void AppendGridRow(const Dictionary& grid_row, Long new_id, StatementList& statements) {
  EachInnerRow(grid_row, "FItemIDs", [&](const Dictionary& item) {
    statements.Append(
        Statement("INSERT INTO t_FL_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName)\r\nVALUES ({},{},{},{},'{}')",
                  new_id, ValueText(item, "FRowID"), ValueText(item, "FItemID"), ValueText(item, "FUnitID"),
                  DoubleQuotes(ValueText(item, "FShowName"))));
  });
  EachInnerRow(grid_row, "FCheckItems", [&](const Dictionary& item) {
    statements.Append(CheckItemInsert(new_id, ValueText(item, "FRowID"), ValueText(item, "FItemClassID"),
                                      ValueText(item, "FItemID")));
  });
  EachInnerRow(grid_row, "FRebateRates", [&](const Dictionary& rate) {
    const Long mark = IsTheNumber(grid_row.GetValue("FZH"), 1) ? 2 : 1;
    statements.Append(Statement(
        "INSERT INTO t_FL_RebateRule (FSchemeID,FRowID,FItemID,FOrgID,FRebateRate,FIndex)\r\n"
        "VALUES ({},{},{},0,{},{})",
        new_id, ValueText(rate, "FRowID"), mark, Amount(rate.Value("FRebateRate")), ValueText(rate, "FIndex")));
  });
}

}  // namespace

void PersistScheme(Call& call, const SaveRequest& request) {
  const Long new_id = InsertHead(call, request);
  StatementList statements;
  if (new_id > 0) AppendChildDeletes(new_id, statements);
  AppendRanges(*request.ranges, new_id, statements);
  AppendOrganisations(request, new_id, statements);
  EachGridRow(*request.grid_rows, [&](const Dictionary& row) { AppendGridRow(row, new_id, statements); });
  if (request.scheme_id > 0) {
    AppendChildDeletes(request.scheme_id, statements);
    statements.Append(Statement("DELETE FROM t_FL_SchemeList WHERE FSchemeID={}", request.scheme_id));
  }
  statements.Run(call);
}

}  // namespace rebate
