#include "service/row_conversion.h"

#include <array>
#include <charconv>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

Ref<Dictionary> ConvertRow(const Recordset& recordset) {
  const std::span<const Variant> values = recordset.Row();
  Ref<KeyList> keys = recordset.Keys();
  if (keys->size() != values.size()) {  // a name stands twice: the later field overwrites the earlier
    Ref<Dictionary> row = New<Dictionary>();
    for (std::size_t i = 0; i < values.size(); ++i) row->SetValue(recordset.FieldName(i), ConvertedValue(values[i]));
    return row;
  }
  return Dictionary::RowOf(std::move(keys), [&](std::size_t i) { return ConvertedValue(values[i]); });
}

}  // namespace

Variant ConvertedValue(const Variant& value) {
  switch (value.type()) {
    case VariantType::Null:
      return "";
    case VariantType::Text: {
      const std::string_view trimmed = Trim(value.text());
      return trimmed.size() == value.text().size() ? value : Variant(trimmed);
    }
    case VariantType::Short:
    case VariantType::Long: {
      std::array<char, 12> digits;
      const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value.integer());
      return std::string_view(digits.data(), end.ptr);
    }
    case VariantType::Decimal:
      return value.text();
    default:
      return Trim(ToText(value));
  }
}

Ref<Dictionary> RowToDictionary(const RecordsetRef& recordset) {
  try {
    return recordset->Eof() ? nullptr : ConvertRow(*recordset);
  } catch (const Error&) {
    return nullptr;
  }
}

Ref<Vector> RecordsetToVector(const RecordsetRef& recordset) {
  try {
    Ref<Vector> rows = New<Vector>();
    for (; !recordset->Eof(); recordset->MoveNext()) rows->Add(RowToDictionary(recordset));
    return rows;
  } catch (const Error&) {
    return nullptr;
  }
}

Ref<Dictionary> ExecuteToRow(Connection& connection, std::string_view statement) {
  const RecordsetRef recordset = connection.Execute(statement);
  Ref<Dictionary> row = RowToDictionary(recordset);
  recordset->Close();
  return row;
}

Ref<Vector> ExecuteToRows(Connection& connection, std::string_view statement) {
  const RecordsetRef recordset = connection.Execute(statement);
  Ref<Vector> rows = RecordsetToVector(recordset);
  recordset->Close();
  return rows;
}

}  // namespace rebate
