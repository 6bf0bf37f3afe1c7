#include "platform/automation/conversion.h"
#include "platform/containers/null_to_default.h"
#include "service/base_info_mgr.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

Text StateQuery(Long scheme_id) {
  return Statement("SELECT ISNULL(FEnable,0) as FEnable,FRebateType FROM dbo.t_FL_SchemeList  WHERE FSchemeID={}",
                   scheme_id);
}

Text EnabledSiblingsQuery(Long scheme_id) {
  return Statement(
      Lines(
          {"Select l.FSchemeName,b.FTypeName ", "From t_FL_SchemeList l",
           "Inner Join (Select FRebateType From t_FL_SchemeList Where FSchemeID ={}) e On l.FRebateType =e.FRebateType",
           "Inner Join t_FL_SchemeMode b On l.FRebateType=b.FRebateType", "Where l.FEnable=1 And l.FSchemeID<>{}"}),
      scheme_id, scheme_id);
}

Text EnableBatch(Long scheme_id) {
  return Statement(
      Lines(
          {"--禁用当前方案同类型方案", "Update l Set l.FEnable =0", "From t_FL_SchemeList l",
           "Inner Join (Select FRebateType From t_FL_SchemeList Where FSchemeID ={}) e On l.FRebateType=e.FRebateType",
           "Where l.FEnable =1 And l.FSchemeID<>{}", "", "--启用当前方案",
           "Update t_FL_SchemeList Set FEnable =1 Where IsNull(FEnable,0)<>1 And FSchemeID={}"}),
      scheme_id, scheme_id, scheme_id);
}

Text DisableStatement(Long scheme_id) {
  return Statement("Update t_FL_SchemeList Set FEnable =0 Where IsNull(FEnable,0)<>0 And FSchemeID={}", scheme_id);
}

Text SiblingQuestion(const Text& type_name, const Text& scheme_name) {
  return Statement("返利模式[{}]中存在已启用方案[{}]，是否继续?\r\n继续操作，将会启用当前方案，同时禁用方案[{}]。",
                   type_name, scheme_name, scheme_name);
}

}  // namespace

bool BaseInfoMgr::CheckEnableScheme(const Text& sDsn, Long lSchemeID, bool Enabled, Text& msg) {
  return frame_.Run<bool>(sDsn, OnFailure::Leave, [&](Call& call, bool& to_flip) {
    const RecordsetRef state = call.Execute(StateQuery(lSchemeID));
    const bool found = !state->Eof();
    const bool enabled = found && ToLong(state->FieldValue("FEnable")) != 0;
    state->Close();
    if (!found) {
      msg = "当前返利模式已经不存在。";
      call.Complete();
      return;
    }
    if (enabled == Enabled) return;
    to_flip = true;
    if (Enabled) {
      const RecordsetRef siblings = call.ExecuteForFirst(EnabledSiblingsQuery(lSchemeID));
      if (!siblings->Eof()) {
        msg = SiblingQuestion(ToText(NullToDefault(siblings->FieldValue("FTypeName"), "")),
                              ToText(NullToDefault(siblings->FieldValue("FSchemeName"), "")));
      }
      siblings->Close();
    }
    call.Complete();
  });
}

bool BaseInfoMgr::EnableScheme(const Text& sDsn, Long FSchemeID, bool Enabled) {
  return frame_.Run<bool>(sDsn, OnFailure::SwallowAndAbort, [&](Call& call, bool& done) {
    call.Execute(Enabled ? EnableBatch(FSchemeID) : DisableStatement(FSchemeID));
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
