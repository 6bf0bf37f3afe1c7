#include "com/type_library.h"

#include "com/com_ref.h"
#include "com/module.h"

namespace rebate::com {

HRESULT LoadOwnTypeLibrary(ITypeLib** library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library);
}

HRESULT FindTypeInfo(REFGUID id, ITypeInfo** info) {
  ComRef<ITypeLib> library;
  const HRESULT result = LoadOwnTypeLibrary(library.Receive());
  return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, info);
}

}  // namespace rebate::com
