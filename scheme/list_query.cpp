#include <array>

#include "model/item_class.h"
#include "model/rebate_class.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

constexpr std::string_view kSource = "BaseInfoMgr.LoadSchemeListData";
constexpr std::string_view kFilterPlace = "1=1";

Text NumberRange(const Dictionary& filter) {
  const Text from = ToText(filter.GetValue("BegTxt", ""));
  const Text to = ToText(filter.GetValue("EndTxt", ""));
  if (from.empty() && to.empty()) return "";
  Text organisations = "SELECT DISTINCT FSchemeID FROM VW_FL_SchemeOrg Where (1=1)";
  if (!from.empty()) organisations += Statement(" And FNumber >= '{}'", DoubleQuotes(from));
  if (!to.empty()) organisations += Statement(" And FNumber <= '{}'", DoubleQuotes(to));
  return Statement("\r\n and a.FSchemeID in ({})", organisations);
}

// Empty where the value is the empty text or no number above 0; a text that is no number raises.
Text PositiveClause(const Dictionary& filter, std::string_view key, std::string_view clause) {
  const Variant value = filter.GetValue(key, Long{-1});
  if (value == Variant("") || ToDouble(value) <= 0) return "";
  return "\r\n" + Statement(clause, ToText(value));
}

Text LikeClause(const Dictionary& filter, std::string_view key, std::string_view clause) {
  const Text value = ToText(filter.GetValue(key, ""));
  return value.empty() ? "" : "\r\n" + Statement(clause, DoubleQuotes(value));
}

Text StatusClause(const Dictionary& filter) {
  const Variant status = filter.GetValue("Status", Long{1});
  if (IsTheNumber(status, 0)) return "\r\n and a.FEnable =0";
  if (IsTheNumber(status, 1)) return "\r\n and a.FEnable =1";
  return "";
}

Text FilterText(const Dictionary& filter) {
  const Text rebate_class = PositiveClause(filter, "RebateClassType", " and b.FRebateClass ={}");
  if (rebate_class.empty()) Refuse(kSource, "RebateClassType无效，无法查询返利方案");
  return Text(kFilterPlace) + NumberRange(filter) + PositiveClause(filter, "SchemeID", " and a.FSchemeID ={}") +
         LikeClause(filter, "SchemeName", " and a.FSchemeName like '%{}%'") +
         LikeClause(filter, "Note", " and a.FNote like '%{}%'") +
         PositiveClause(filter, "RebateType", " and a.FRebateType ={}") + StatusClause(filter) + rebate_class;
}

Text ListQuery(const Dictionary& filter) {
  const Text query = Lines(
      {"select a.FSchemeID,a.FSchemeName,a.FModifyDate,a.FNote,a.FRebateType ,",
       "CASE WHEN ISNULL( a.FEnable,0)=0 THEN '禁用' WHEN  ISNULL( a.FEnable,0)=1 THEN '启用' END AS FEnable,",
       "b.FTypeName as FRebateMode,c.FName as FCheckerID,", "'' as FOrg,'' as FOrgDetail,o.FItemID,i.FNumber,i.FName",
       "from t_FL_SchemeList a   ", "inner join t_FL_SchemeMode b on a.FRebateType=b.FRebateType  ",
       "inner join t_user c on a.FCheckerID=c.FUserID  ",
       "left  join (SELECT DISTINCT FSchemeID, FItemClassID, FItemID FROM t_FL_AllOrgs) o on "
       "a.FSchemeID=o.FSchemeID  ",
       "LEFT JOIN t_Item i ON i.FItemClassID =o.FItemClassID AND i.FItemID =o.FItemID ",
       "where 1=1 order by a.FModifyDate DESC,a.FSchemeID,i.FNumber"});
  return Replace(query, kFilterPlace, FilterText(filter));
}

// The text for a whole-class row.
std::string_view AllText(const Variant& rebate_class_value) {
  if (EqualsNumber(rebate_class_value, rebate_class::kPurchases)) return "全部供应商";
  if (EqualsNumber(rebate_class_value, rebate_class::kSales)) return "全部客户";
  return "";
}

// Folds the rows of a scheme, which stand together, into one entry with its organisations.
class SchemeFold {
 public:
  SchemeFold(RecordsetRef rows, std::string_view all_text)
      : rows_(std::move(rows)),
        all_text_(all_text),
        scheme_(rows_->FieldIndex("FSchemeID")),
        item_(rows_->FieldIndex("FItemID")),
        number_(rows_->FieldIndex("FNumber")),
        name_(rows_->FieldIndex("FName")) {
    std::vector<Text> names;
    for (std::size_t field = 0; field < rows_->FieldCount(); ++field) {
      if (field == item_ || field == number_ || field == name_) continue;
      names.push_back(rows_->FieldName(field));
      fields_.push_back(field);
    }
    entry_keys_ = New<KeyList>(names);
  }

  Ref<Vector> Fold() {
    std::vector<Variant> schemes;
    Long last_id = 0;
    for (; !rows_->Eof(); rows_->MoveNext()) {
      const std::span<const Variant> row = rows_->Row();
      const Long id = ToLong(row[scheme_]);
      if (id != last_id) {
        FinishEntry();
        StartEntry(row);
        schemes.push_back(entry_);
        last_id = id;
      }
      AddOrganisation(row);
    }
    FinishEntry();
    return Vector::Of(schemes);
  }

 private:
  // The head's fields, those of the organisation left out.
  void StartEntry(std::span<const Variant> row) {
    entry_ = Dictionary::RowOf(entry_keys_, [&](std::size_t i) { return Converted(row[fields_[i]]); });
  }

  // Schemes that follow each other often have a date in common, whose text they then share.
  Variant Converted(const Variant& value) {
    if (value.type() != VariantType::Date) return ConvertedValue(value);
    if (!(value == date_)) {
      date_text_ = ConvertedValue(value);
      date_ = value;
    }
    return date_text_;
  }

  void AddOrganisation(std::span<const Variant> row) {
    const Variant& item = row[item_];
    if (!organisations_.empty()) organisations_ += ",";
    if (EqualsNumber(item, item_class::kAbnormalAccounts)) {
      organisations_ += "往来异常";
    } else if (EqualsNumber(item, item_class::kWholeClass)) {
      organisations_ += all_text_;
    } else {
      AppendText(row[number_]);
      organisations_ += '_';
      AppendText(row[name_]);
    }
    const std::array fields = {item_, number_, name_};
    details_.push_back(Dictionary::RowOf(detail_keys_, [&](std::size_t i) { return row[fields[i]]; }));
  }

  // The empty text for a Null.
  void AppendText(const Variant& value) {
    if (value.IsText()) {
      organisations_ += value.text();
    } else if (!value.IsNull()) {
      organisations_ += ToText(value);
    }
  }

  void FinishEntry() {
    if (entry_) {
      entry_->SetValue("FOrgDetail", Vector::Of(details_));
      entry_->SetValue("FOrg", organisations_);
    }
    details_.clear();
    organisations_.clear();
  }

  RecordsetRef rows_;
  std::string_view all_text_;
  std::size_t scheme_;
  std::size_t item_;
  std::size_t number_;
  std::size_t name_;
  std::vector<std::size_t> fields_;  // of the head
  Ref<KeyList> entry_keys_;
  Ref<KeyList> detail_keys_ = New<KeyList>(std::vector<Text>{"FItemID", "FNumber", "FName"});
  Ref<Dictionary> entry_;
  std::vector<Variant> details_;
  Variant date_;
  Variant date_text_;
  Text organisations_;
};

}  // namespace

Ref<Vector> BaseInfoMgr::LoadSchemeListData(const Text& sDsn, Ref<Dictionary>& dct) {
  return frame_.Run<Ref<Vector>>(sDsn, OnFailure::Swallow, [&](Call& call, Ref<Vector>& schemes) {
    if (!dct) Refuse(kSource, "dct Is Nothing，无法查询返利方案");
    const RecordsetRef rows = call.Execute(ListQuery(*dct));
    schemes = SchemeFold(rows, AllText(dct->GetValue("RebateClassType", Long{-1}))).Fold();
    rows->Close();
    call.Complete();
  });
}

}  // namespace rebate
