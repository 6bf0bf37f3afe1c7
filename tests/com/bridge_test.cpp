#include "com/bridge.h"

#include <memory>

#include "com/module.h"
#include "com/values.h"
#include "platform/automation/dispatch.h"
#include "tests/com/com_kit.h"

// The boundary itself, around objects of the test's own.
namespace rebate::com {
namespace {

class Thrower : public Object {
 public:
  Text Raise(Long kind, Text& note) {
    note = "changed";
    if (kind == 1) throw std::bad_alloc();
    if (kind == 2) throw std::runtime_error("at random");
    if (kind == 3) {
      Error error(-2147217900, "Engine", "语法错误");
      error.help_file = "rebate.chm";
      error.help_context = 12;
      throw error;
    }
    return "nothing";
  }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("Raise", &Thrower::Raise, {"kind", "[note]"})};
    return members;
  }
};

struct Answer {
  HRESULT result = S_OK;
  EXCEPINFO told{};
  OwnVariant value;
};

// Calls the first member of a thrower; `arguments` in the order of the system.
std::unique_ptr<Answer> Raise(std::vector<VARIANT> arguments, std::vector<DISPID> names = {}) {
  const ComRef<IDispatch> thrower = ClientSide(New<Thrower>());
  auto answer = std::make_unique<Answer>();
  DISPPARAMS parameters{arguments.data(), names.data(), static_cast<UINT>(arguments.size()),
                        static_cast<UINT>(names.size())};
  answer->result =
      thrower->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &parameters, &answer->value, &answer->told, nullptr);
  return answer;
}

VARIANT Number(LONG number) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_I4;
  value.lVal = number;
  return value;
}

TEST(Bridge, TurnsWhateverAMemberRaisesIntoAnAnswer) {
  const std::tuple<LONG, HRESULT, const char*> cases[] = {
      {1, E_OUTOFMEMORY, "Out of memory"},
      {2, static_cast<HRESULT>(0x800A0033), "at random"},
      {3, static_cast<HRESULT>(0x80040E14), "语法错误"},
  };
  for (const auto& [kind, code, description] : cases) {
    const auto answer = Raise({Number(kind)});
    EXPECT_EQ(answer->result, DISP_E_EXCEPTION);
    EXPECT_EQ(answer->told.scode, code);
    EXPECT_EQ(FromBstr(answer->told.bstrDescription), description);
    ComRef<IErrorInfo> left;
    ASSERT_EQ(GetErrorInfo(0, left.Receive()), S_OK);
    OwnBstr text;
    left->GetDescription(text.Receive());
    EXPECT_EQ(FromBstr(text.get()), description);
    if (kind == 3) {
      EXPECT_EQ(FromBstr(answer->told.bstrSource), "Engine");
      EXPECT_EQ(FromBstr(answer->told.bstrHelpFile), "rebate.chm");
      EXPECT_EQ(answer->told.dwHelpContext, 12U);
    }
    SysFreeString(answer->told.bstrSource);
    SysFreeString(answer->told.bstrDescription);
    SysFreeString(answer->told.bstrHelpFile);
  }
}

TEST(Bridge, FitsArgumentsByPositionAndByName) {
  EXPECT_EQ(FromClient(Raise({Number(0)})->value), Variant("nothing"));
  OwnVariant note;
  ToClient("old", note);
  VARIANT by_ref;
  by_ref.vt = VT_BYREF | VT_VARIANT;
  by_ref.pvarVal = &note;
  EXPECT_EQ(Raise({by_ref, Number(0)}, {1})->result, S_OK);  // note := …, kind by position
  EXPECT_EQ(FromClient(note), Variant("changed"));
  EXPECT_EQ(Raise({Number(0), by_ref}, {0, 1})->result, S_OK);
  EXPECT_EQ(Raise({Number(0)}, {2})->result, DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(Raise({Number(0), Number(0)}, {0})->result, DISP_E_PARAMNOTFOUND);  // once by name, once by position
  EXPECT_EQ(Raise({Number(0), Number(0), Number(0)})->result, DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(Raise({})->result, DISP_E_EXCEPTION);

  const ComRef<IDispatch> thrower = ClientSide(New<Thrower>());
  std::wstring names[] = {L"raise", L"NOTE", L"none"};
  OLECHAR* asked[] = {names[0].data(), names[1].data(), names[2].data()};
  DISPID ids[3];
  EXPECT_EQ(thrower->GetIDsOfNames(IID_NULL, asked, 2, 0, ids), S_OK);
  EXPECT_EQ(ids[0], 1);
  EXPECT_EQ(ids[1], 1);
  EXPECT_EQ(thrower->GetIDsOfNames(IID_NULL, asked, 3, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[2], DISPID_UNKNOWN);
}

TEST(Bridge, IsOneForAnObjectAndEndsWithItsLastClient) {
  const bool unused = IsUnused();
  {
    const Ref<Vector> list = New<Vector>();
    const ComRef<IDispatch> first = ClientSide(list);
    const ComRef<IDispatch> second = ClientSide(list);
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(As<IUnknown>(first.get()).get(), As<IUnknown>(As<ISupportErrorInfo>(first.get()).get()).get());
    EXPECT_EQ(OwnSide(first.get()).get(), list.get());
    EXPECT_EQ(first->AddRef(), 3U);
    EXPECT_EQ(first->Release(), 2U);
    EXPECT_FALSE(IsUnused());
  }
  EXPECT_EQ(IsUnused(), unused);
}

TEST(Bridge, WalksOverContainers) {
  const Ref<Dictionary> map = Row({{"a", 1}, {"b", 2}});
  const Ref<Vector> list = List({"x", map});
  const auto walked = [](const ObjectRef& object) {
    const ComRef<IDispatch> client = ClientSide(object);
    DISPPARAMS none{};
    OwnVariant answer;
    EXPECT_EQ(client->Invoke(DISPID_NEWENUM, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, &answer, nullptr, nullptr),
              S_OK);
    const ComRef<IEnumVARIANT> each = As<IEnumVARIANT>(answer.punkVal);
    std::vector<Variant> values;
    for (;;) {
      OwnVariant value;
      if (each->Next(1, &value, nullptr) != S_OK) break;
      values.push_back(FromClient(value));
    }
    EXPECT_EQ(each->Reset(), S_OK);
    EXPECT_EQ(each->Skip(static_cast<ULONG>(values.size()) + 1), S_FALSE);
    return values;
  };
  EXPECT_EQ(walked(list), (std::vector<Variant>{"x", map}));
  EXPECT_EQ(walked(map), (std::vector<Variant>{"a", "b"}));
  EXPECT_TRUE(walked(New<Vector>()).empty());
}

}  // namespace
}  // namespace rebate::com
