#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <oleauto.h>

#include "com/bridge.h"
#include "com/com_ref.h"
#include "com/foreign_object.h"
#include "com/wide_text.h"
#include "tests/test_account.h"

namespace rebate::com {

// An object of a registered class, as a client in this process gets it.
inline ComRef<IDispatch> Created(std::string_view program_id) {
  CLSID id{};
  ComRef<IDispatch> object;
  EXPECT_EQ(CLSIDFromProgID(Wide(program_id).c_str(), &id), S_OK) << program_id;
  EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch),
                             reinterpret_cast<void**>(object.Receive())),
            S_OK)
      << program_id;
  return object;
}

// A late-bound client of one object.
class Client {
 public:
  explicit Client(const Variant& object) : object_(object.object()) {}
  static Client Of(std::string_view class_name) {
    return Client(ObjectRef(New<ForeignObject>(Created("TALMRebateRuleMgr." + Text(class_name)))));
  }

  Variant Call(std::string_view member, std::vector<Variant> arguments = {}) const {
    return object_->Invoke(member, arguments);
  }
  void Put(std::string_view member, std::vector<Variant> arguments) const { object_->Put(member, arguments); }
  const ObjectRef& object() const { return object_; }

 private:
  ObjectRef object_;
};

// The apartment of a thread while it lives.
class Apartment {
 public:
  Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  ~Apartment() { CoUninitialize(); }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
};

}  // namespace rebate::com
