#pragma once

#include <windows.h>

#include <oleauto.h>

#include <utility>
#include <vector>

#include "com/com_ref.h"
#include "platform/automation/variant.h"

namespace rebate::com {

// A client's own automation object, called late by member name. Texts and integers go to it by reference, as the
// system's own late binding passes variables, and come back in the arguments.
class ForeignObject : public Object {
 public:
  explicit ForeignObject(ComRef<IDispatch> object) : object_(std::move(object)) {}

  // An object whose owner keeps it alive: it isn't counted.
  static Ref<ForeignObject> Borrow(IDispatch* object);

  Variant Invoke(std::string_view member, std::span<Variant> arguments) override;
  // The same with all arguments by value, which script engines know to take in every place.
  Variant InvokeByValue(std::string_view member, std::span<const Variant> arguments);
  void Put(std::string_view member, std::span<Variant> arguments) override;

  // Whether the object knows a member of that name.
  bool Answers(std::string_view member);

  const ComRef<IDispatch>& client_object() const { return object_; }

 protected:
  ~ForeignObject() override;

 private:
  class Arguments;

  Variant Invoke(std::string_view member, Arguments& passed);
  HRESULT Find(std::string_view member, DISPID& id);
  DISPID IdOf(std::string_view member);

  ComRef<IDispatch> object_;
  bool borrowed_ = false;
  std::vector<std::pair<Text, DISPID>> ids_;  // of the members that were called
};

}  // namespace rebate::com
