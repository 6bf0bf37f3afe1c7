#include "TALMRebateRuleMgr.h"
#include "com/errors.h"
#include "com/values.h"
#include "platform/automation/conversion.h"
#include "tests/com/com_kit.h"
#include "tests/scheme_kit.h"

// Clients of the registered component. Their containers are this program's own, to the component a client's.
namespace rebate::com {
namespace {

class ComClient : public ::testing::Test {
 protected:
  ComClient() { AddMasterData(account_); }

  // A scheme of supplier 3, and of the goods in a list.
  Variant Save(const Variant& goods) {
    const Variant type = Row({{"FRebateType", 2041}, {"FRangeItemClass", 4}});
    const Variant head = Row({{"FSchemeID", 0}, {"FSchemeName", "洗护"}, {"FNote", ""}});
    const Variant ranges = List({Row({{"FLowerLimit", "0"}, {"FUpperLimit", "100"}})});
    const Variant organisations =
        List({Row({{"FRowID", 0}, {"FItemClassID", 8}, {"FItemID", 3}, {"FShowName", "Third"}})});
    const Variant rates = List({Row({{"FRowID", 1}, {"FRebateRate", "5"}, {"FIndex", 1}})});
    const Variant rows = List({Row({{"FItemIDs", goods}, {"FRebateRates", rates}, {"FZH", 0}})});
    return manager_.Call("SaveOneSchemeData", {account_.dsn(), type, head, ranges, organisations, rows});
  }
  Variant Goods(Long id) {
    return List({Row({{"FRowID", 1}, {"FItemID", id}, {"FUnitID", 0}, {"FShowName", "goods"}})});
  }

  TestAccount account_;
  Client manager_ = Client::Of("BaseInfoMgr");
};

TEST_F(ComClient, SavesOutOfContainersOfItsOwn) {
  EXPECT_EQ(Client(Save(Goods(71))).Call("Value", {"OK"}), Variant(true));
  const Client refused(Save(Goods(71)));
  EXPECT_EQ(refused.Call("Value", {"OK"}), Variant(false));
  const Client repeated(refused.Call("Value", {"Repeat"}));
  EXPECT_EQ(Client(repeated.Call("", {1})).Call("Value", {"FSchemeName"}), Variant("洗护"));
  // A container of the component's with a client's in it.
  const Client goods = Client::Of("Vector");
  goods.Call("Add", {Row({{"FRowID", 1}, {"FItemID", 72}, {"FUnitID", 0}, {"FShowName", "goods"}})});
  EXPECT_EQ(Client(Save(goods.object())).Call("Value", {"OK"}), Variant(true));
  EXPECT_EQ(account_.Rows("select FItemID from t_FL_AllItems order by FItemID"), "71\n72");
}

TEST_F(ComClient, FindsWhatACallChangedInItsContainers) {
  Save(Goods(71));
  const Text id = account_.Rows("select FSchemeID from t_FL_SchemeList");
  const Ref<Dictionary> parts = Row({{"stale", 1}});
  EXPECT_EQ(manager_.Call("LoadSchemeRowData", {account_.dsn(), id, parts}), Variant(true));
  EXPECT_EQ(Client(parts->Value("SchemeMain")).Call("Value", {"FSchemeName"}), Variant("洗护"));
  const Client goods(parts->Value("AllItemsRS"));
  EXPECT_EQ(Client(goods.Call("Fields", {"FItemID"})).Call("Value"), Variant(71));
  goods.Put("Filter", {"FItemID=9"});
  EXPECT_EQ(goods.Call("EOF"), Variant(true));

  // What a call only reads stays as it is, nested objects too.
  const Ref<Dictionary> filter = Row({{"RebateClassType", 24}});
  const Variant nested = New<Vector>();
  filter->SetValue("nested", nested);
  EXPECT_EQ(Client(manager_.Call("LoadSchemeListData", {account_.dsn(), filter})).Call("Size"), Variant(1));
  EXPECT_TRUE(filter->Value("nested") == nested);
}

TEST_F(ComClient, LeavesAContainerThatHoldsItself) {
  const Ref<Vector> list = New<Vector>();
  list->Add(list);
  try {
    manager_.Call("SaveRebateRange", {account_.dsn(), 2040, list});
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number, error_number::kInvalidCall);
  }
  list->Clear();
  const Client own = Client::Of("Vector");
  own.Call("Add", {own.object()});
  EXPECT_THROW(manager_.Call("SaveRebateRange", {account_.dsn(), 2040, own.object()}), Error);
  own.Call("Clear");
}

TEST_F(ComClient, CallsOverTheVtable) {
  const ComRef<_BaseInfoMgr> manager = As<_BaseInfoMgr>(Created("TALMRebateRuleMgr.BaseInfoMgr").get());
  ASSERT_TRUE(manager);
  const OwnBstr dsn(account_.dsn());
  EXPECT_EQ(Client(Save(Goods(71))).Call("Value", {"OK"}), Variant(true));
  EXPECT_EQ(Client(Save(Goods(72))).Call("Value", {"OK"}), Variant(true));
  const Long first = ToLong(account_.Rows("select min(FSchemeID) from t_FL_SchemeList"));
  VARIANT_BOOL done = VARIANT_FALSE;
  EXPECT_EQ(manager->EnableScheme(dsn.get(), first, VARIANT_FALSE, &done), S_OK);
  EXPECT_EQ(done, VARIANT_TRUE);
  OwnBstr message("as it was");
  EXPECT_EQ(manager->CheckEnableScheme(dsn.get(), first, VARIANT_TRUE, message.Receive(), &done), S_OK);
  EXPECT_EQ(done, VARIANT_TRUE);
  EXPECT_NE(FromBstr(message.get()).find("洗护"), Text::npos);
  EXPECT_EQ(account_.Rows("select FEnable from t_FL_SchemeList order by FSchemeID"), "0\n1");

  ComRef<IDispatch> filter = ClientSide(Row({{"RebateClassType", 24}, {"Status", 2}}));
  ComRef<IDispatch> list;
  IDispatch* passed = filter.get();
  EXPECT_EQ(manager->LoadSchemeListData(dsn.get(), &passed, list.Receive()), S_OK);
  EXPECT_EQ(Client(OwnSide(list.get())).Call("Size"), Variant(2));
  ComRef<IDispatch> none;
  EXPECT_EQ(manager->LoadRebateTypeData(dsn.get(), 7, none.Receive()), S_OK);
  EXPECT_FALSE(none);
  LONG mode = 0;
  EXPECT_EQ(manager->get_TransMode(&mode), S_OK);
  EXPECT_EQ(mode, 2);
  EXPECT_EQ(manager->get_TransMode(nullptr), E_POINTER);
  EXPECT_TRUE(FAILED(manager->LoadSchemeListData(dsn.get(), nullptr, none.Receive())));

  const auto rules = As<_RebateRuleMgr>(Created("TALMRebateRuleMgr.RebateRuleMgr").get());
  OwnBstr ids;
  EXPECT_EQ(rules->GetRangeID(dsn.get(), 2040, ids.Receive()), S_OK);
  EXPECT_EQ(FromBstr(ids.get()), ",");
  LONG type = 2040;
  IDispatch* rows = nullptr;
  EXPECT_EQ(rules->SaveAllRule(dsn.get(), &type, &rows, &done), S_OK);
  EXPECT_EQ(done, VARIANT_TRUE);
  EXPECT_EQ(type, 2040);
}

TEST_F(ComClient, LearnsWhatAnErrorSays) {
  const auto manager = As<_BaseInfoMgr>(Created("TALMRebateRuleMgr.BaseInfoMgr").get());
  EXPECT_EQ(As<ISupportErrorInfo>(manager.get())->InterfaceSupportsErrorInfo(__uuidof(_BaseInfoMgr)), S_OK);
  OwnVariant batch;
  ToClient(Variant::Array({"select * from t_None"}), batch);
  EXPECT_EQ(manager->UpdateBatch(OwnBstr(account_.dsn()).get(), batch), static_cast<HRESULT>(0x80040E14));
  ComRef<IErrorInfo> info;
  ASSERT_EQ(GetErrorInfo(0, info.Receive()), S_OK);
  OwnBstr source;
  OwnBstr description;
  info->GetSource(source.Receive());
  info->GetDescription(description.Receive());
  EXPECT_EQ(FromBstr(source.get()), "BaseInfoMgr:UpdateBatch");
  EXPECT_EQ(FromBstr(description.get()), "Invalid object name 't_None'.");
}

TEST_F(ComClient, LetsAFieldCountByItsValue) {
  Save(Goods(71));
  const Ref<Dictionary> parts = Row({});
  manager_.Call("LoadSchemeRowData", {account_.dsn(), account_.Rows("select FSchemeID from t_FL_SchemeList"), parts});
  const Variant field = Client(parts->Value("AllItemsRS")).Call("Fields", {"FItemID"});
  const Client map = Client::Of("Dictionary");
  OwnVariant value;
  ToClient(field, value);
  OwnVariant key;
  ToClient("id", key);
  VARIANT arguments[] = {value, key};
  DISPID name = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{arguments, &name, 2, 1};
  const ComRef<IDispatch> client = ClientSide(map.object());
  std::wstring member = L"Value";
  OLECHAR* names[] = {member.data()};
  DISPID id = 0;
  ASSERT_EQ(client->GetIDsOfNames(IID_NULL, names, 1, 0, &id), S_OK);
  EXPECT_EQ(client->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYPUT, &parameters, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(map.Call("Value", {"id"}), Variant(71));
  map.Put("Value", {field, "by its value"});  // as a key, too
  EXPECT_EQ(map.Call("Value", {"71"}), Variant("by its value"));
  EXPECT_EQ(client->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYPUTREF, &parameters, nullptr, nullptr, nullptr), S_OK);
  EXPECT_TRUE(map.Call("Value", {"id"}).IsObject());
}

}  // namespace
}  // namespace rebate::com
