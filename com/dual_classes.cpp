#include "com/dual_classes.h"

#include "TALMRebateRuleMgr.h"
#include "com/dual_bridge.h"
#include "service/base_info_mgr.h"
#include "service/rebate_rule_mgr.h"

namespace rebate::com {
namespace {

class BaseInfoMgrBridge final : public DualBridge<_BaseInfoMgr> {
 public:
  using DualBridge::DualBridge;

  STDMETHODIMP DeleteItemNotInRule(BSTR sDsn, LONG lType, VARIANT_BOOL bGoods, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lType, bGoods);
  }
  STDMETHODIMP GetRebateRange(BSTR sDsn, LONG lType, IDispatch** result) override {
    return Call(__func__, result, sDsn, lType);
  }
  STDMETHODIMP SaveRebateRange(BSTR sDsn, LONG lType, IDispatch** vecData, LONG SchemeID,
                               VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lType, vecData, SchemeID);
  }
  STDMETHODIMP GetItemInfo(LONG lType, LONG lStatus, BSTR sDsn, LONG UserID, IDispatch** result) override {
    return Call(__func__, result, lType, lStatus, sDsn, UserID);
  }
  STDMETHODIMP SaveSelectedItem(BSTR sDsn, IDispatch** dicData, LONG lType, LONG lUserID, LONG lOrgID,
                                VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, dicData, lType, lUserID, lOrgID);
  }
  STDMETHODIMP LoadRebateTypeData(BSTR sDsn, LONG lRebateClass, IDispatch** result) override {
    return Call(__func__, result, sDsn, lRebateClass);
  }
  STDMETHODIMP LoadSchemeRowData(BSTR sDsn, LONG lSchemeID, IDispatch** dctSchemeData, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lSchemeID, dctSchemeData);
  }
  STDMETHODIMP LoadSchemeListData(BSTR sDsn, IDispatch** dct, IDispatch** result) override {
    return Call(__func__, result, sDsn, dct);
  }
  STDMETHODIMP CheckEnableScheme(BSTR sDsn, LONG lSchemeID, VARIANT_BOOL Enabled, BSTR* msg,
                                 VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lSchemeID, Enabled, msg);
  }
  STDMETHODIMP EnableScheme(BSTR sDsn, LONG FSchemeID, VARIANT_BOOL Enabled, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, FSchemeID, Enabled);
  }
  STDMETHODIMP SaveOneSchemeData(BSTR sDsn, IDispatch** SchemeConst, IDispatch** SchemeMainData,
                                 IDispatch** AllRangesData, IDispatch** AllOrgsData, IDispatch** AllGridRows,
                                 IDispatch** result) override {
    return Call(__func__, result, sDsn, SchemeConst, SchemeMainData, AllRangesData, AllOrgsData, AllGridRows);
  }
  STDMETHODIMP SaveSchemeData(BSTR sDsn, LONG SchemeID, BSTR SchemeName, LONG lRebateType, LONG lRebateMode, BSTR sOrg,
                              IDispatch* vecRangeData, IDispatch* vecSchemeData, BSTR Note,
                              VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, SchemeID, SchemeName, lRebateType, lRebateMode, sOrg, vecRangeData,
                vecSchemeData, Note);
  }
  STDMETHODIMP ViewSchemeData(BSTR sDsn, LONG SchemeID, BSTR* SchemeName, LONG* lRebateType, LONG* lRebateMode,
                              BSTR* sOrg, IDispatch** vecRangeData, IDispatch** vecSchemeData, BSTR* Note,
                              VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, SchemeID, SchemeName, lRebateType, lRebateMode, sOrg, vecRangeData,
                vecSchemeData, Note);
  }
  STDMETHODIMP DelSchemeData(BSTR sDsn, BSTR strSchemeID, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, strSchemeID);
  }
  STDMETHODIMP CheckSchemeData(BSTR sDsn, LONG SchemeID, LONG lRebateType, LONG lRebateMode, LONG lOrg, BSTR ItemID,
                               VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, SchemeID, lRebateType, lRebateMode, lOrg, ItemID);
  }
  STDMETHODIMP get_TransMode(LONG* result) override { return Call("TransMode", result); }
  STDMETHODIMP UpdateBatch(BSTR sDsn, VARIANT SQLBatch) override { return CallWithoutResult(__func__, sDsn, SQLBatch); }
  STDMETHODIMP ExistsSchemeName(BSTR sDsn, LONG lSchemeID, BSTR strSchemeName, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lSchemeID, strSchemeName);
  }
  STDMETHODIMP CheckSchemeAllowDel(BSTR sDsn, BSTR strSchemeID, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, strSchemeID);
  }
};

class RebateRuleMgrBridge final : public DualBridge<_RebateRuleMgr> {
 public:
  using DualBridge::DualBridge;

  STDMETHODIMP SaveAllRule(BSTR sDsn, LONG* lType, IDispatch** vecData, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lType, vecData);
  }
  STDMETHODIMP SaveRebateRule(BSTR sDsn, LONG lType, IDispatch** vecData, LONG lOrgID, LONG lUserID,
                              VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, lType, vecData, lOrgID, lUserID);
  }
  STDMETHODIMP GetRebateRangeIndex(BSTR sDsn, LONG RangeIndex, LONG lType, LONG* result) override {
    return Call(__func__, result, sDsn, RangeIndex, lType);
  }
  STDMETHODIMP GetRebateRuleByItem(BSTR sDsn, LONG lType, LONG lOrgID, LONG UserID, LONG lItemID,
                                   IDispatch** result) override {
    return Call(__func__, result, sDsn, lType, lOrgID, UserID, lItemID);
  }
  STDMETHODIMP GetRangeID(BSTR sDsn, LONG lType, BSTR* result) override { return Call(__func__, result, sDsn, lType); }
  STDMETHODIMP GetRebateRule(BSTR sDsn, LONG lType, LONG lOrgID, LONG UserID, IDispatch** result) override {
    return Call(__func__, result, sDsn, lType, lOrgID, UserID);
  }
  STDMETHODIMP get_TransMode(LONG* result) override { return Call("TransMode", result); }
  STDMETHODIMP GetForbidSchemeList(BSTR sDsn, LONG nRebateClassType, IDispatch** result) override {
    return Call(__func__, result, sDsn, nRebateClassType);
  }
  STDMETHODIMP UnForbidSchemeList(BSTR sDsn, BSTR strSchemeList, VARIANT_BOOL* result) override {
    return Call(__func__, result, sDsn, strSchemeList);
  }
};

template <typename Made>
Bridge* MakeBridge(ObjectRef object, const DualClass& dual) {
  return new Made(std::move(object), &dual);
}

const DualClass kBaseInfoMgr{__uuidof(::BaseInfoMgr), __uuidof(_BaseInfoMgr), &MakeBridge<BaseInfoMgrBridge>};
const DualClass kRebateRuleMgr{__uuidof(::RebateRuleMgr), __uuidof(_RebateRuleMgr), &MakeBridge<RebateRuleMgrBridge>};

}  // namespace

const DualClass* DualClassOf(const Object& object) {
  if (dynamic_cast<const BaseInfoMgr*>(&object) != nullptr) return &kBaseInfoMgr;
  if (dynamic_cast<const RebateRuleMgr*>(&object) != nullptr) return &kRebateRuleMgr;
  return nullptr;
}

}  // namespace rebate::com
