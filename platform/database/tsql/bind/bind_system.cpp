#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/eval/literal.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {

using bound::SystemValue;

namespace {

constexpr std::string_view kVersionText = "Transact-SQL on an embedded account, 2.3";

const DataType kDateTime2{TypeKind::DateTime2, 0, 0, 7};
const DataType kIdentityType = DecimalType(38, 0);
const DataType kNameType = TextType(TypeKind::NVarChar, 128);

bound::ExpressionPtr MakeSystem(SystemValue value, const DataType& type, bool nullable) {
  return bound::Make(bound::System{value}, type, nullable);
}

bound::ExpressionPtr MakeText(std::string_view text, const DataType& type) {
  return bound::Make(bound::Constant{Text(text)}, type, false);
}

[[noreturn]] void RefuseVariable(const Text& name) {
  RefuseStatement("Must declare the scalar variable \"" + name + "\".");
}

bound::ExpressionPtr BindSystemVariable(const Text& key, const Text& name) {
  if (key == "@@identity") return MakeSystem(SystemValue::Identity, kIdentityType, true);
  if (key == "@@rowcount") return MakeSystem(SystemValue::RowCount, IntType(), false);
  if (key == "@@trancount") return MakeSystem(SystemValue::TransactionCount, IntType(), false);
  if (key == "@@error") return MakeSystem(SystemValue::ErrorNumber, IntType(), false);
  if (key == "@@version") return MakeText(kVersionText, TextType(TypeKind::NVarChar, 300));
  if (key == "@@servername") return MakeText("embedded", kNameType);
  if (key == "@@language") return MakeText("us_english", kNameType);
  if (key == "@@spid") return bound::Make(bound::Constant{std::int64_t{1}}, TypeOf(TypeKind::SmallInt), false);
  if (key == "@@datefirst") return bound::Make(bound::Constant{std::int64_t{7}}, TypeOf(TypeKind::TinyInt), false);
  if (key == "@@max_precision") return bound::Make(bound::Constant{std::int64_t{38}}, TypeOf(TypeKind::TinyInt), false);
  RefuseVariable(name);
}

// A function of an object that a text constant names.
bound::ExpressionPtr BindNamedObject(BindContext& context, const FunctionCall& call, SystemValue value,
                                     const DataType& type, std::size_t most_arguments) {
  CheckArguments(call, 1, most_arguments);
  const auto* literal = std::get_if<Literal>(&call.arguments.front()->node);
  const bool text = literal != nullptr && context.literals[literal->index].kind >= LiteralKind::String;
  if (!text || call.arguments.size() > 1 || context.constant_literals) {
    RefuseUnsupported(AsciiUpper(call.name) + " of other than one text constant");
  }
  return bound::Make(bound::System{value, literal->index}, type, true);
}

}  // namespace

bound::ExpressionPtr BindVariable(BindContext& context, const VariableReference& reference) {
  const Text key = LowerKey(reference.name);
  if (context.in_definition) RefuseVariable(reference.name);
  if (key.starts_with("@@")) return BindSystemVariable(key, reference.name);
  const auto found = context.variables.find(key);
  if (found == context.variables.end()) RefuseVariable(reference.name);
  return bound::Make(bound::Variable{key}, found->second, true);
}

bound::ExpressionPtr BindSystemFunction(BindContext& context, const FunctionCall& call) {
  const Text name = LowerKey(call.name);
  const bool now = name == "getdate" || name == "current_timestamp";
  if (now) return MakeSystem(SystemValue::Now, DateTimeType(), false);
  if (name == "sysdatetime") return MakeSystem(SystemValue::Now, kDateTime2, false);
  if (name == "getutcdate") return MakeSystem(SystemValue::UtcNow, DateTimeType(), false);
  if (name == "sysutcdatetime") return MakeSystem(SystemValue::UtcNow, kDateTime2, false);
  if (name == "scope_identity") return MakeSystem(SystemValue::Identity, kIdentityType, true);
  if (name == "object_id") return BindNamedObject(context, call, SystemValue::ObjectId, IntType(), 2);
  if (name == "ident_current") return BindNamedObject(context, call, SystemValue::LastIdentity, kIdentityType, 1);
  if (name == "db_name") {
    CheckArguments(call, 0, 0);
    return MakeSystem(SystemValue::DatabaseName, kNameType, false);
  }
  if (name == "schema_name") return MakeText("dbo", kNameType);
  return nullptr;
}

}  // namespace rebate::tsql
