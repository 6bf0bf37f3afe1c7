#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "platform/login/call_observer.h"
#include "platform/values/calendar.h"
#include "service/base_info_mgr.h"
#include "service/statement_list.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

constexpr std::string_view kSource = "BaseInfoMgr.SaveSchemeData";

Text FieldText(const Dictionary& row, std::string_view key, std::string_view fallback = "0") {
  return ToText(row.GetValue(key, fallback));
}

Ref<Dictionary> RowAt(const Vector& rows, Long index) {
  return ObjectAs<Dictionary>(rows.Item(index));
}

// The id in the first row of a query; `missing` where there is no row.
template <typename Missing>
Long FirstId(Call& call, const Text& query, Missing missing) {
  const RecordsetRef rows = call.Execute(query);
  return rows->Eof() ? missing() : ToLong(rows->FieldValue("FID"));
}

// One form-based save under way.
class FormSave {
 public:
  FormSave(Call& call, Long rebate_type, const Text& organisations)
      : call_(call),
        rebate_type_(rebate_type),
        by_total_(rebate_type::IsFormTotal(rebate_type)),
        mode_name_(rebate_type::ModeName(rebate_type)),
        organisation_list_(organisations),
        organisations_(Split(organisations, ',')) {}

  void ReplaceHead(Long replaced_id, const Text& name, Long rebate_mode, const Text& note) {
    call_.Execute(Statement("Delete from t_FL_SchemeList where FID={}", replaced_id));
    call_.Execute(
        Statement("insert into t_FL_SchemeList(FSchemeName,FRebateMode,FRebateCor,FRebateType,FNote,"
                  "FModifyDate,FCheckerID) values ('{}',{},'{}',{},'{}','{}',{})",
                  DoubleQuotes(name), rebate_mode, DoubleQuotes(organisation_list_), rebate_type_, DoubleQuotes(note),
                  LocalDate(), call_.UserId()));
    id_ = FirstId(call_, Statement("select FID from t_FL_SchemeList where FSchemeName='{}'", DoubleQuotes(name)),
                  []() -> Long { Refuse(kSource, "The scheme that was just written isn't there"); });
    if (CallObserver* observer = TheCallObserver()) observer->StoringScheme(id_);
  }

  void ReplaceRanges(const Vector& ranges) {
    Clear("t_FL_RebateRange");
    RunGathered(call_, [&](StatementList& statements) {
      for (Long i = 1; i <= ranges.UBound(); ++i) {
        const Ref<Dictionary> range = RowAt(ranges, i);
        statements.Append(
            Statement("Insert into t_FL_RebateRange (FClassTypeID,FLowerLimit,FUpperLimit,FNote,FIndex,FFlag,"
                      "FSchemeID) Values({},{},{},'{}',{},1,{}) \r\n",
                      rebate_type_, FieldText(*range, "FLower"), FieldText(*range, "FUpper"), mode_name_, i, id_));
      }
    });
  }

  // A run of adjacent rows with one key is one selection.
  void ReplaceSelection(const Vector& rows) {
    Clear("t_ItemSelect");
    RunGathered(call_, [&](StatementList& statements) {
      Text previous;
      for (Long i = 1; i <= rows.UBound(); ++i) {
        Text key = FieldText(*RowAt(rows, i), by_total_ ? "FOrgID" : "FItemID");
        if (key != previous) Select(key, statements);
        previous = std::move(key);
      }
    });
  }

  void ReplaceRules(const Vector& rows) {
    Clear("t_FL_RebateRule");
    for (Long i = 1; i <= rows.UBound(); ++i) {
      const Ref<Dictionary> row = RowAt(rows, i);
      const Long range = RangeOf(*row);
      if (by_total_) {
        InsertTotalRule(*row, range);
      } else if (organisations_.empty()) {
        InsertItemRule(*row, "0", range);
      } else {
        for (const Text& organisation : organisations_) {
          InsertItemRule(*row, organisation, range);
          InsertGoodsOfNewestRule(*row);
        }
      }
    }
  }

 private:
  void Clear(std::string_view table) {
    call_.Execute(Statement("Delete from {} where FClassTypeID={} and FSchemeID={}", table, rebate_type_, id_));
  }

  void Select(const Text& key, StatementList& statements) {
    if (by_total_) {
      statements.Append(SelectionInsert("0", key));
      return;
    }
    const std::vector<Text> items = Split(key, ',');
    const std::vector<Text> everyone{"0"};
    for (const Text& organisation : organisations_.empty() ? everyone : organisations_) {
      for (const Text& item : items) statements.Append(SelectionInsert(item, organisation));
    }
  }

  Text SelectionInsert(std::string_view item, std::string_view organisation) const {
    return Statement("Insert into t_ItemSelect (FClassTypeID,FItemID,FOrgID,FSchemeID) Values({},{},{},{}) \r\n",
                     rebate_type_, item, organisation, id_);
  }

  Long RangeOf(const Dictionary& row) {
    const Long band = ToLong(row.GetValue("FRebateCount", "0"));
    return FirstId(call_,
                   Statement("select FID from t_FL_RebateRange where FClassTypeID={} and FSchemeID={} and FIndex={}",
                             rebate_type_, id_, band),
                   []() -> Long { Refuse(kSource, "A row names a band that the scheme doesn't have"); });
  }

  void InsertTotalRule(const Dictionary& row, Long range) {
    call_.Execute(
        Statement("Insert into t_FL_RebateRule (FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate,FNote,"
                  "FIndex,FSchemeID,FUnitID) Values({},0,{},{},{},'{}',{},{},{}) \r\n",
                  rebate_type_, FieldText(row, "FOrgID"), range, FieldText(row, "FRebateRate"), mode_name_, index_++,
                  id_, FieldText(row, "FUnitID")));
  }

  void InsertItemRule(const Dictionary& row, std::string_view organisation, Long range) {
    call_.Execute(Statement(
        "Insert into t_FL_RebateRule (FClassTypeID,FItemID,FOrgID,FAmtRangeID,FRebateRate,FNote,"
        "FIndex,FSchemeID,FUnitID,FCheckItemID) Values({},'{}',{},{},{},'{}',{},{},{},'{}') \r\n",
        rebate_type_, DoubleQuotes(FieldText(row, "FItemID")), organisation, range, FieldText(row, "FRebateRate"),
        mode_name_, index_++, id_, FieldText(row, "FUnitID"), DoubleQuotes(FieldText(row, "FCheckItemID", ""))));
  }

  // The newest rule row is the one just written: the unit of work lets no other writer in between.
  void InsertGoodsOfNewestRule(const Dictionary& row) {
    newest_rule_ =
        FirstId(call_, "select top 1 FID from t_FL_RebateRule order by FID desc", [this] { return newest_rule_; });
    for (const Text& item : Split(FieldText(row, "FItemID"), ',')) {
      call_.Execute(Statement("Insert into t_FL_AllItems(FItemID,FRuleTableID) values ({},{})", item, newest_rule_));
    }
  }

  Call& call_;
  Long rebate_type_;
  bool by_total_;
  std::string_view mode_name_;
  Text organisation_list_;
  std::vector<Text> organisations_;
  Long id_ = 0;
  Long index_ = 1;  // runs across grid rows and organisations
  Long newest_rule_ = 0;
};

bool HasRows(const Ref<Vector>& rows) {
  return rows && rows->Size() > 0;
}

}  // namespace

bool BaseInfoMgr::SaveSchemeData(const Text& sDsn, Long SchemeID, const Text& SchemeName, Long lRebateType,
                                 Long lRebateMode, const Text& sOrg, Ref<Vector> vecRangeData,
                                 Ref<Vector> vecSchemeData, const Text& Note) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& done) {
    if (!HasRows(vecRangeData) || !HasRows(vecSchemeData)) Refuse(kSource, "A form needs bands and grid rows");
    FormSave save(call, lRebateType, sOrg);
    save.ReplaceHead(SchemeID, SchemeName, lRebateMode, Note);
    save.ReplaceRanges(*vecRangeData);
    save.ReplaceSelection(*vecSchemeData);
    save.ReplaceRules(*vecSchemeData);
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
