#pragma once

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "service/call_frame.h"

namespace rebate {

// Keeps schemes, amount ranges and selections. `sDsn` names the data source. No operation but UpdateBatch lets an error
// reach its caller: a failure is answered by False, 0, the null reference or the empty text, unless told otherwise. Ids
// and codes go into the statements as they come.
class BaseInfoMgr : public Object {
 public:
  static constexpr std::string_view kClassName = "BaseInfoMgr";

  // Drops the selected entities of a type that have no rule; `bGoods` tells a goods grid from a grid of organisations.
  bool DeleteItemNotInRule(const Text& sDsn, Long lType, bool bGoods);

  // The amount ranges of a type as rows (FID, FLowerLimit, FUpperLimit), by lower limit; null where there are none.
  Ref<Vector> GetRebateRange(const Text& sDsn, Long lType);

  // Replaces the amount ranges of a type under `SchemeID`, rules following their ranges. `vecData` holds rows with
  // FLower, FUpper and FIndex; empty or null, it is refused.
  bool SaveRebateRange(const Text& sDsn, Long lType, Ref<Vector>& vecData, Long SchemeID);

  // The live entities of a type, by number: the selected ones (`lStatus` 1) or the others (0), under the data rights of
  // `UserID`; null where there are none.
  Ref<Vector> GetItemInfo(Long lType, Long lStatus, const Text& sDsn, Long UserID);

  // Replaces the selection of a type under `lOrgID` by the entity ids that stand in `dicData` under "1", "2" and so on.
  bool SaveSelectedItem(const Text& sDsn, Ref<Dictionary>& dicData, Long lType, Long lUserID, Long lOrgID);

  // The rebate types of a class as rows, in display order; null where the class has none.
  Ref<Vector> LoadRebateTypeData(const Text& sDsn, Long lRebateClass);

  // Fills `dctSchemeData` with all parts of one scheme: SchemeMain, SchemeConst, AllRanges, AllOrgsRS, AllOrgs,
  // AllRulesRS, AllRowIDs, AllItemsRS, AllChecksRS, those in RS as live recordsets. False, and nothing filled in, where
  // there is no such scheme.
  bool LoadSchemeRowData(const Text& sDsn, Long lSchemeID, Ref<Dictionary>& dctSchemeData);

  // The schemes that match the filter `dct` (BegTxt, EndTxt, SchemeID, SchemeName, Note, RebateType, Status,
  // RebateClassType), newest first, each a row with its organisations as one text under FOrg and as a list under
  // FOrgDetail; null where the filter names no class. An empty SchemeID or RebateType and a Status that is no number
  // leave nothing out.
  Ref<Vector> LoadSchemeListData(const Text& sDsn, Ref<Dictionary>& dct);

  // Whether the scheme is to be moved to the state `Enabled`. Where that disables another scheme, `msg` is the question
  // to the user; where the scheme is gone, `msg` says so.
  bool CheckEnableScheme(const Text& sDsn, Long lSchemeID, bool Enabled, Text& msg);

  // Enables a scheme and disables every other enabled one of its type, or disables the scheme alone.
  bool EnableScheme(const Text& sDsn, Long FSchemeID, bool Enabled);

  // Stores a scheme whole under a new id, in the place of the one that the head names. The answer holds "OK", and where
  // that is False the reason under "Err" and, for an overlap with enabled schemes, the overlapping rows under "Repeat".
  Ref<Dictionary> SaveOneSchemeData(const Text& sDsn, Ref<Dictionary>& SchemeConst, Ref<Dictionary>& SchemeMainData,
                                    Ref<Vector>& AllRangesData, Ref<Vector>& AllOrgsData, Ref<Vector>& AllGridRows);

  // Stores a scheme from a form in the place of `SchemeID`. `vecRangeData` holds bands (FLower, FUpper),
  // `vecSchemeData` one row per item or organisation and band (FItemID, FOrgID, FRebateCount, FRebateRate, FUnitID,
  // FCheckItemID).
  bool SaveSchemeData(const Text& sDsn, Long SchemeID, const Text& SchemeName, Long lRebateType, Long lRebateMode,
                      const Text& sOrg, Ref<Vector> vecRangeData, Ref<Vector> vecSchemeData, const Text& Note);

  // Gives a scheme that SaveSchemeData stored back in the shape in which it takes it.
  bool ViewSchemeData(const Text& sDsn, Long SchemeID, Text& SchemeName, Long& lRebateType, Long& lRebateMode,
                      Text& sOrg, Ref<Vector>& vecRangeData, Ref<Vector>& vecSchemeData, Text& Note);

  // Deletes the schemes of a comma-separated list of ids with all their rows.
  bool DelSchemeData(const Text& sDsn, const Text& strSchemeID);

  // Whether a rule of another scheme already covers the item (modes 1 to 5) or the organisation (6 and 7).
  bool CheckSchemeData(const Text& sDsn, Long SchemeID, Long lRebateType, Long lRebateMode, Long lOrg,
                       const Text& ItemID);

  // The transaction mode that the component asks for: 2, always.
  Long TransMode();

  // Runs the texts of an array one by one, skipping the empty ones. Raises the error of the first that is refused, with
  // the source "BaseInfoMgr:UpdateBatch"; nothing then stands.
  void UpdateBatch(const Text& sDsn, const Variant& SQLBatch);

  // Whether a scheme other than `lSchemeID` bears the name.
  bool ExistsSchemeName(const Text& sDsn, Long lSchemeID, const Text& strSchemeName);

  // Whether no scheme of a comma-separated list of ids is linked.
  bool CheckSchemeAllowDel(const Text& sDsn, const Text& strSchemeID);

  const MemberTable& Members() const override;

 private:
  CallFrame frame_;
};

}  // namespace rebate
