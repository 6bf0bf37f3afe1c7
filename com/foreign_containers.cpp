#include "com/foreign_containers.h"

#include <algorithm>

#include "com/foreign_object.h"
#include "platform/automation/conversion.h"

namespace rebate::com {
namespace {

// No request nests containers deeper, but those that hold themselves.
constexpr int kDeepest = 100;

[[noreturn]] void ThrowHoldsItself() {
  throw Error(error_number::kInvalidCall, "", "A container holds itself.");
}

enum class Shape { List, Map, Other };

// What a client's object is, by the members that it answers to.
Shape ShapeOf(ForeignObject& object) {
  if (object.Answers("UBound") && object.Answers("Item")) return Shape::List;
  if (object.Answers("Key") && object.Answers("Count") && object.Answers("Value")) return Shape::Map;
  return Shape::Other;
}

// One object may be known under several references; its identity is one.
const void* IdentityOf(const Object& object) {
  const auto* foreign = dynamic_cast<const ForeignObject*>(&object);
  if (foreign == nullptr) return &object;
  return As<IUnknown>(foreign->client_object().get()).get();
}

Variant Get(Object& object, std::string_view member, std::vector<Variant> arguments = {}) {
  auto* foreign = dynamic_cast<ForeignObject*>(&object);
  return foreign != nullptr ? foreign->InvokeByValue(member, arguments) : object.Invoke(member, arguments);
}

bool IsList(const Object& copy) {
  return dynamic_cast<const Vector*>(&copy) != nullptr;
}

// Before a client's container is emptied: whether it can be filled again.
void CheckChangeable(Object& original, bool list) {
  auto* foreign = dynamic_cast<ForeignObject*>(&original);
  if (foreign == nullptr || (foreign->Answers("Clear") && foreign->Answers(list ? "Add" : "Value"))) return;
  throw Error(
      error_number::kNoSuchMember, "",
      list ? "A list that is to be filled needs Clear and Add." : "A map that is to be filled needs Clear and Value.");
}

std::vector<Variant> ContentOf(const Object& container) {
  std::vector<Variant> content;
  if (const auto* list = dynamic_cast<const Vector*>(&container)) {
    for (Long i = 1; i <= list->Size(); ++i) content.push_back(list->Item(i));
  } else if (const auto* map = dynamic_cast<const Dictionary*>(&container)) {
    for (Long i = 1; i <= map->Count(); ++i) {
      content.emplace_back(map->Key(i));
      content.push_back(map->Value(map->Key(i)));
    }
  }
  return content;
}

}  // namespace

Variant ForeignContainers::TakeIn(const Variant& value, std::string_view class_name) {
  if (!value.IsObject() || !value.object()) return value;
  const ObjectRef object = value.object();
  if (dynamic_cast<ForeignObject*>(object.get()) != nullptr) return Copy(object, class_name == Vector::kClassName);
  return NeedsCopy(value) ? Variant(Copy(object, dynamic_cast<Vector*>(object.get()) != nullptr)) : value;
}

// Whether the value is a client's container, or a container of this component's with one in it.
bool ForeignContainers::NeedsCopy(const Variant& value, int depth) const {
  if (!value.IsObject() || !value.object()) return false;
  if (depth > kDeepest) ThrowHoldsItself();
  const ObjectRef object = value.object();
  if (auto* foreign = dynamic_cast<ForeignObject*>(object.get())) return ShapeOf(*foreign) != Shape::Other;
  const std::vector<Variant> content = ContentOf(*object);
  return std::any_of(content.begin(), content.end(), [&](const Variant& inner) { return NeedsCopy(inner, depth + 1); });
}

ObjectRef ForeignContainers::Copy(const ObjectRef& original, bool list) {
  const void* identity = IdentityOf(*original);
  if (const auto found = by_identity_.find(identity); found != by_identity_.end()) return taken_[found->second].copy;
  if (std::find(open_.begin(), open_.end(), identity) != open_.end()) {
    ThrowHoldsItself();
  }
  open_.push_back(identity);
  ObjectRef copy;
  if (list) {
    const Ref<Vector> vector = New<Vector>();
    CopyList(*original, *vector);
    copy = vector;
  } else {
    const Ref<Dictionary> dictionary = New<Dictionary>();
    CopyMap(*original, *dictionary);
    copy = dictionary;
  }
  open_.pop_back();
  by_identity_[identity] = by_copy_[copy.get()] = taken_.size();
  taken_.push_back({original, copy, copy, ContentOf(*copy)});
  return copy;
}

void ForeignContainers::CopyList(Object& original, Vector& copy) {
  const Long last = ToLong(Get(original, "UBound"));
  for (Long i = ToLong(Get(original, "LBound")); i <= last; ++i) copy.Add(Inner(Get(original, "Item", {i})));
}

void ForeignContainers::CopyMap(Object& original, Dictionary& copy) {
  const Long count = ToLong(Get(original, "Count"));
  for (Long i = 1; i <= count; ++i) {
    const Variant key = Get(original, "Key", {i});
    copy.SetValue(ToText(key), Inner(Get(original, "Value", {key})));
  }
}

Variant ForeignContainers::Inner(const Variant& value) {
  if (!value.IsObject() || !value.object()) return value;
  const ObjectRef object = value.object();
  auto* foreign = dynamic_cast<ForeignObject*>(object.get());
  if (foreign == nullptr) return TakeIn(value, {});
  const Shape shape = ShapeOf(*foreign);
  return shape == Shape::Other ? value : Variant(Copy(object, shape == Shape::List));
}

const ForeignContainers::Taken* ForeignContainers::Find(const Variant& copy) const {
  if (!copy.IsObject()) return nullptr;
  const auto found = by_copy_.find(copy.object().get());
  return found == by_copy_.end() ? nullptr : &taken_[found->second];
}

bool ForeignContainers::Replace(const Variant& before, const Variant& after, bool by_value) {
  const ObjectRef now = after.IsObject() ? after.object() : nullptr;
  if (const Taken* taken = Find(before)) {
    taken_[static_cast<std::size_t>(taken - taken_.data())].now = now;
    return true;
  }
  if (!by_value || !before.IsObject() || !before.object()) return false;
  taken_.push_back({before.object(), before.object(), now, ContentOf(*before.object())});
  return true;
}

Variant ForeignContainers::Original(const Variant& value) const {
  const Taken* taken = Find(value);
  return taken != nullptr ? Variant(taken->original) : value;
}

void ForeignContainers::GiveBack() {
  struct Change {
    const Taken& taken;
    std::vector<Variant> now;
  };
  std::vector<Change> changes;
  for (const Taken& taken : taken_) {
    std::vector<Variant> now = taken.now ? ContentOf(*taken.now) : std::vector<Variant>();
    if (now == taken.before) continue;
    CheckChangeable(*taken.original, IsList(*taken.copy));
    changes.push_back({taken, std::move(now)});
  }
  for (const Change& change : changes) {
    Object& original = *change.taken.original;
    const std::vector<Variant>& now = change.now;
    Get(original, "Clear");
    if (IsList(*change.taken.copy)) {
      for (const Variant& element : now) Get(original, "Add", {Original(element)});
    } else {
      for (std::size_t i = 0; i + 1 < now.size(); i += 2) {
        Variant entry[] = {now[i], Original(now[i + 1])};
        original.Put("Value", entry);
      }
    }
  }
}

}  // namespace rebate::com
