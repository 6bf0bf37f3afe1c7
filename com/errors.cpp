#include "com/errors.h"

#include <cstdio>

#include "com/com_ref.h"
#include "com/wide_text.h"
#include "platform/values/ascii.h"

namespace rebate::com {
namespace {

// The language's own errors travel in the facility of controls.
constexpr std::uint32_t kLanguageErrors = 0x800A0000;
constexpr std::string_view kDefaultSource = "TALMRebateRuleMgr";

std::string_view SourceOf(const Error& error) {
  return error.source.empty() ? kDefaultSource : std::string_view(error.source);
}

Text Hexadecimal(HRESULT result) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "0x%08lX", static_cast<unsigned long>(result));
  return digits;
}

Long NumberOf(HRESULT result) {
  const auto bits = static_cast<std::uint32_t>(result);
  switch (result) {
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
      return error_number::kNoSuchMember;
    case DISP_E_TYPEMISMATCH:
      return error_number::kTypeMismatch;
    case DISP_E_BADPARAMCOUNT:
      return error_number::kArgumentCount;
    case DISP_E_PARAMNOTOPTIONAL:
      return error_number::kNotOptional;
    default:
      return (bits & 0xFFFF0000) == kLanguageErrors ? static_cast<Long>(bits & 0xFFFF) : static_cast<Long>(result);
  }
}

}  // namespace

Text SystemText(HRESULT result) {
  wchar_t* text = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, static_cast<DWORD>(result), 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  const Text described = length == 0 ? "Automation error " + Hexadecimal(result) : Narrow({text, length});
  LocalFree(text);
  return Text(TrimWhite(described));
}

HRESULT ResultOf(const Error& error) {
  if (error.number == error_number::kOutOfMemory) return E_OUTOFMEMORY;
  if (error.number < 0) return static_cast<HRESULT>(error.number);
  const auto number = static_cast<std::uint32_t>(error.number);
  return number >= 1 && number <= 0xFFFF ? static_cast<HRESULT>(kLanguageErrors | number) : E_FAIL;
}

HRESULT Leave(const Error& error, REFIID raised_by) noexcept {
  const HRESULT result = ResultOf(error);
  try {
    ComRef<ICreateErrorInfo> info;
    if (FAILED(CreateErrorInfo(info.Receive()))) return result;
    info->SetGUID(raised_by);
    info->SetSource(OwnBstr(SourceOf(error)).get());
    info->SetDescription(OwnBstr(error.description).get());
    info->SetHelpFile(OwnBstr(error.help_file).get());
    info->SetHelpContext(static_cast<DWORD>(error.help_context));
    SetErrorInfo(0, As<IErrorInfo>(info.get()).get());
  } catch (const std::bad_alloc&) {
    // The number alone has to do.
  }
  return result;
}

void Tell(const Error& error, EXCEPINFO* told) noexcept {
  if (told == nullptr) return;
  *told = {};
  told->scode = ResultOf(error);
  told->dwHelpContext = static_cast<DWORD>(error.help_context);
  try {
    told->bstrSource = NewBstr(SourceOf(error));
    told->bstrDescription = NewBstr(error.description);
    if (!error.help_file.empty()) told->bstrHelpFile = NewBstr(error.help_file);
  } catch (const std::bad_alloc&) {
    // The number alone has to do.
  }
}

Error Taken(HRESULT result, EXCEPINFO& told, std::string_view member) {
  if (result != DISP_E_EXCEPTION) {
    return Error(NumberOf(result), "", SystemText(result) + ": " + Text(member));
  }
  if (told.pfnDeferredFillIn != nullptr) told.pfnDeferredFillIn(&told);
  const HRESULT code = told.wCode != 0 ? static_cast<HRESULT>(kLanguageErrors | told.wCode) : told.scode;
  Error error(NumberOf(code), FromBstr(told.bstrSource), FromBstr(told.bstrDescription));
  if (error.description.empty()) error.description = SystemText(code) + ": " + Text(member);
  error.help_file = FromBstr(told.bstrHelpFile);
  error.help_context = static_cast<Long>(told.dwHelpContext);
  SysFreeString(told.bstrSource);
  SysFreeString(told.bstrDescription);
  SysFreeString(told.bstrHelpFile);
  told = {};
  return error;
}

}  // namespace rebate::com
