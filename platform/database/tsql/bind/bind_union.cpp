#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/bind_query.h"
#include "platform/database/tsql/bind/meeting.h"

namespace rebate::tsql {

void MeetCores(BindContext& context, bound::Query& query) {
  for (std::size_t column = 0; column < query.columns.size(); ++column) {
    std::vector<bound::Expression*> values;
    for (bound::Core& core : query.cores) values.push_back(core.items[column].value.get());
    const DataType type = CommonTypeOf(context, values).value_or(IntType());
    bool nullable = false;
    for (bound::Core& core : query.cores) {
      bound::ExpressionPtr& value = core.items[column].value;
      nullable = nullable || value->nullable;
      value = ConvertTo(context, std::move(value), type, Purpose::Cast);
    }
    query.columns[column].type = type;
    query.columns[column].nullable = nullable;
    query.columns[column].identity = false;
  }
}

bound::Core CoreOver(bound::QueryPtr query, Text name) {
  bound::Core core;
  auto source = std::make_unique<bound::Source>();
  source->name = std::move(name);
  source->columns = query->columns;
  for (std::size_t i = 0; i < source->columns.size(); ++i) source->sql_columns.push_back('c' + std::to_string(i + 1));
  source->query = std::move(query);
  for (std::size_t i = 0; i < source->columns.size(); ++i) core.items.push_back({BindColumn(*source, i), {}});
  core.from.push_back(FromOf(source.get()));
  core.sources.push_back(std::move(source));
  return core;
}

}  // namespace rebate::tsql
