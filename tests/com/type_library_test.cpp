#include <windows.h>

#include <ocidl.h>

#include <sstream>

#include "com/type_library.h"
#include "platform/automation/dispatch.h"
#include "service/component_classes.h"
#include "tests/com/com_kit.h"

// The type libraries of both widths against the member tables, which late-bound clients call.
namespace rebate::com {
namespace {

Text Guid(REFGUID id) {
  wchar_t text[40];
  StringFromGUID2(id, text, 40);
  return Narrow(text);
}

Text TypeText(const DeclaredType& type, bool by_ref) {
  Text text;
  switch (type.kind) {
    case DeclaredType::Kind::None:
      return "none";
    case DeclaredType::Kind::Text:
      text = "text";
      break;
    case DeclaredType::Kind::Long:
      text = "long";
      break;
    case DeclaredType::Kind::Boolean:
      text = "boolean";
      break;
    case DeclaredType::Kind::Value:
      text = "value";
      break;
    case DeclaredType::Kind::Object:
      text = "object";
      break;
  }
  return by_ref ? text + " by ref" : text;
}

Text TypeText(const TYPEDESC& type) {
  switch (type.vt) {
    case VT_BSTR:
      return "text";
    case VT_I4:
      return "long";
    case VT_BOOL:
      return "boolean";
    case VT_VARIANT:
      return "value";
    case VT_VOID:
      return "none";
    case VT_DISPATCH:
      return "object";
    case VT_PTR:
      return TypeText(*type.lptdesc) + " by ref";
    default:
      return "type " + std::to_string(type.vt);
  }
}

// The members of a class as its table has them, one a line.
Text FromTable(const ComponentClass& entry) {
  std::ostringstream text;
  int id = 0;
  for (const Member& member : entry.create()->Members().All()) {
    text << ++id << (member.kind == MemberKind::Method ? " method " : " property ") << member.name << "(";
    for (const Parameter& parameter : member.parameters) {
      text << parameter.name << ": " << TypeText(parameter.type, parameter.by_ref) << (parameter.optional ? " = 0" : "")
           << ", ";
    }
    text << "): " << TypeText(member.result, false) << "\n";
  }
  return text.str();
}

Text ParameterText(const ELEMDESC& element) {
  const USHORT flags = element.paramdesc.wParamFlags;
  const bool out = (flags & PARAMFLAG_FOUT) != 0;
  Text text = TypeText(element.tdesc);
  EXPECT_NE(flags & PARAMFLAG_FIN, 0);  // what is out is by reference, and the other way round
  EXPECT_EQ(out, text.ends_with("by ref"));
  if ((flags & PARAMFLAG_FHASDEFAULT) != 0) {
    const VARIANT& value = element.paramdesc.pparamdescex->varDefaultValue;
    text += " = " + std::to_string(value.vt == VT_I4 ? value.lVal : value.iVal);
  }
  return text;
}

Text FunctionText(ITypeInfo& info, const FUNCDESC& function) {
  BSTR names[16] = {};
  UINT count = 0;
  info.GetNames(function.memid, names, 16, &count);
  std::ostringstream text;
  text << function.memid << (function.invkind == INVOKE_FUNC ? " method " : " property ") << FromBstr(names[0]) << "(";
  for (SHORT i = 0; i < function.cParams; ++i) {
    const bool named = static_cast<UINT>(i) + 1 < count;
    text << (named ? FromBstr(names[i + 1]) : "?") << ": " << ParameterText(function.lprgelemdescParam[i]) << ", ";
  }
  for (UINT i = 0; i < count; ++i) SysFreeString(names[i]);
  text << "): " << TypeText(function.elemdescFunc.tdesc) << "\n";
  return text.str();
}

// The members of a dual interface's dispatch half, without those of IDispatch itself.
Text FromLibrary(ITypeInfo& info) {
  TYPEATTR* attributes = nullptr;
  info.GetTypeAttr(&attributes);
  Text text;
  for (UINT i = 0; i < attributes->cFuncs; ++i) {
    FUNCDESC* function = nullptr;
    info.GetFuncDesc(i, &function);
    if (function->memid > 0 && function->memid < 0x60000000) text += FunctionText(info, *function);
    info.ReleaseFuncDesc(function);
  }
  info.ReleaseTypeAttr(attributes);
  return text;
}

TYPEATTR Attributes(ITypeInfo& info) {
  TYPEATTR* attributes = nullptr;
  info.GetTypeAttr(&attributes);
  const TYPEATTR copy = *attributes;
  info.ReleaseTypeAttr(attributes);
  return copy;
}

Text NameOf(ITypeInfo& info) {
  OwnBstr name;
  info.GetDocumentation(MEMBERID_NIL, name.Receive(), nullptr, nullptr, nullptr);
  return FromBstr(name.get());
}

// The class, its only interface, and the members.
void ExpectClass(ITypeInfo& declared, const ComponentClass& entry) {
  EXPECT_EQ(NameOf(declared), entry.name);
  EXPECT_EQ(Guid(Attributes(declared).guid), entry.class_id);
  ASSERT_EQ(Attributes(declared).cImplTypes, 1);
  INT flags = 0;
  declared.GetImplTypeFlags(0, &flags);
  EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
  HREFTYPE reference = 0;
  declared.GetRefTypeOfImplType(0, &reference);
  ComRef<ITypeInfo> interface_info;
  declared.GetRefTypeInfo(reference, interface_info.Receive());
  EXPECT_EQ(NameOf(*interface_info.get()), entry.interface_name);
  EXPECT_EQ(Guid(Attributes(*interface_info.get()).guid), entry.interface_id);
  EXPECT_NE(Attributes(*interface_info.get()).wTypeFlags & TYPEFLAG_FDUAL, 0);
  EXPECT_EQ(FromLibrary(*interface_info.get()), FromTable(entry));
}

void ExpectLibrary(const wchar_t* path, SYSKIND system) {
  ComRef<ITypeLib> library;
  ASSERT_EQ(LoadTypeLibEx(path, REGKIND_NONE, library.Receive()), S_OK) << Narrow(path);
  TLIBATTR* attributes = nullptr;
  library->GetLibAttr(&attributes);
  const ComponentLibrary& component = TheComponent();
  EXPECT_EQ(Guid(attributes->guid), component.id);
  EXPECT_EQ(attributes->wMajorVerNum, component.major_version);
  EXPECT_EQ(attributes->wMinorVerNum, component.minor_version);
  EXPECT_EQ(attributes->syskind, system);
  library->ReleaseTLibAttr(attributes);
  OwnBstr name;
  library->GetDocumentation(-1, name.Receive(), nullptr, nullptr, nullptr);
  EXPECT_EQ(FromBstr(name.get()), component.name);

  std::size_t classes = 0;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    TYPEKIND kind{};
    library->GetTypeInfoType(i, &kind);
    if (kind != TKIND_COCLASS) continue;
    ComRef<ITypeInfo> declared;
    library->GetTypeInfo(i, declared.Receive());
    ASSERT_LT(classes, component.classes.size());
    ExpectClass(*declared.get(), component.classes[classes++]);
  }
  EXPECT_EQ(classes, component.classes.size());
}

TEST(TypeLibrary, DeclaresWhatTheMemberTablesHave) {
  ExpectLibrary(REBATE_LIBRARY_FILE, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
}

// The other width's library can't be run here, but read.
TEST(TypeLibrary, IsTheSameInTheOtherWidth) {
  const wchar_t* path = _wgetenv(L"REBATE_OTHER_LIBRARY");
  if (path == nullptr) GTEST_SKIP() << "REBATE_OTHER_LIBRARY names no library";
  ExpectLibrary(path, sizeof(void*) == 8 ? SYS_WIN32 : SYS_WIN64);
}

TEST(TypeLibrary, IsWhatInstancesTellOfThemselves) {
  for (const ComponentClass& entry : TheComponent().classes) {
    const ComRef<IDispatch> instance = Created("TALMRebateRuleMgr." + Text(entry.name));
    UINT count = 0;
    EXPECT_EQ(instance->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    ComRef<ITypeInfo> info;
    ASSERT_EQ(instance->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive()), S_OK);
    EXPECT_EQ(Guid(Attributes(*info.get()).guid), entry.interface_id);
    ComRef<ITypeInfo> declared;
    ASSERT_EQ(As<IProvideClassInfo>(instance.get())->GetClassInfo(declared.Receive()), S_OK);
    EXPECT_EQ(Guid(Attributes(*declared.get()).guid), entry.class_id);
  }
}

}  // namespace
}  // namespace rebate::com
