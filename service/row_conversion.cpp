#include "service/row_conversion.h"

#include "platform/automation/conversion.h"
#include "platform/containers/null_to_default.h"

namespace rebate {
namespace {

Variant ConvertedValue(Variant value) {
  value = NullToDefault(std::move(value), "");
  if (!value.IsText()) return Variant(Trim(ToText(value)));
  const std::string_view trimmed = Trim(value.text());
  return trimmed.size() == value.text().size() ? value : Variant(trimmed);
}

Ref<Dictionary> ConvertRow(const Recordset& recordset) {
  const std::size_t count = recordset.FieldCount();
  Ref<KeyList> keys = recordset.Keys();
  if (keys->size() != count) {  // a name stands twice: the later field overwrites the earlier
    Ref<Dictionary> row = New<Dictionary>();
    for (std::size_t i = 0; i < count; ++i)
      row->SetValue(recordset.FieldName(i), ConvertedValue(recordset.FieldValue(i)));
    return row;
  }
  std::vector<Variant> values;
  values.reserve(count);
  for (std::size_t i = 0; i < count; ++i) values.push_back(ConvertedValue(recordset.FieldValue(i)));
  return New<Dictionary>(std::move(keys), std::move(values));
}

}  // namespace

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
