#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/meeting.h"

namespace rebate::tsql {


bound::ExpressionPtr BindCast(BindContext& context, Scope& scope, const Cast& cast) {
  bound::ExpressionPtr operand = BindValue(context, scope, *cast.operand);
  const Purpose purpose = cast.tolerant ? Purpose::Tolerant : Purpose::Cast;
  if (IsNullLiteral(*operand)) return bound::Make(bound::Null{true}, cast.type, true);
  if (IsText(cast.type.kind) && IsExactNumber(operand->type.kind)) operand->type = OwnType(context, *operand);
  bound::ExpressionPtr style;
  if (cast.style) {
    style = BindValue(context, scope, *cast.style);
    if (IsNullLiteral(*style)) return bound::Make(bound::Null{true}, cast.type, true);
    style = ConvertTo(context, std::move(style), IntType(), Purpose::Cast);
  }
  CheckConvertible(operand->type, cast.type, true);
  return ConvertTo(context, std::move(operand), cast.type, purpose, std::move(style));
}

}  // namespace rebate::tsql
