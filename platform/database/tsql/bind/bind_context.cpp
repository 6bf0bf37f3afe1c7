#include "platform/database/tsql/bind/bind_context.h"

#include <algorithm>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate::tsql {

void RefuseStatement(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

void RefuseUnsupported(std::string_view name) {
  RefuseStatement("'" + Text(name) + "' is not supported by an embedded account.");
}

TablePtr UseObject(BindContext& context, const ObjectName& name) {
  TablePtr object = FindObject(context.catalog, name);
  context.uses.push_back({name, object->signature});
  return object;
}

void FixLiteral(BindContext& context, std::size_t literal) {
  auto& fixed = context.fixed_literals;
  if (std::find(fixed.begin(), fixed.end(), literal) == fixed.end()) fixed.push_back(literal);
}

}  // namespace rebate::tsql
