#include "platform/database/odbc/result_reader.h"

#include <string_view>

#include "platform/values/ascii.h"
#include "platform/values/calendar.h"
#include "platform/values/number_text.h"

namespace rebate::odbc {
namespace {

constexpr SQLLEN kWideUnit = sizeof(char16_t);

enum class Kind { Boolean, Short, Long, BigInteger, Decimal, Currency, Single, Double, DateTime, TimeOfDay, Text };

struct Column {
  Text name;
  Kind kind;
};

Kind KindOf(SQLLEN type, std::string_view type_name) {
  switch (type) {
    case SQL_BIT:
      return Kind::Boolean;
    case SQL_TINYINT:
    case SQL_SMALLINT:
      return Kind::Short;
    case SQL_INTEGER:
      return Kind::Long;
    case SQL_BIGINT:
      return Kind::BigInteger;
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      return EqualsIgnoreCase(type_name, "money") || EqualsIgnoreCase(type_name, "smallmoney") ? Kind::Currency
                                                                                               : Kind::Decimal;
    case SQL_REAL:
      return Kind::Single;
    case SQL_FLOAT:
    case SQL_DOUBLE:
      return Kind::Double;
    case SQL_TYPE_DATE:
    case SQL_TYPE_TIMESTAMP:
      return Kind::DateTime;
    case SQL_TYPE_TIME:
      return Kind::TimeOfDay;
    default:
      return Kind::Text;
  }
}

// A text about a column; `field` is its SQL_DESC_ code.
Text Describe(const Statement& statement, SQLUSMALLINT column, SQLUSMALLINT field) {
  return ReadGrowing([&](std::u16string& buffer) {
    SQLSMALLINT bytes = 0;
    Check(statement, SQLColAttributeW(statement.get(), column, field, ToSql(buffer),
                                      static_cast<SQLSMALLINT>(buffer.size() * kWideUnit), &bytes, nullptr));
    return static_cast<SQLSMALLINT>(bytes / kWideUnit);
  });
}

std::vector<Column> DescribeColumns(const Statement& statement) {
  std::vector<Column> columns;
  const auto count = static_cast<SQLUSMALLINT>(ColumnCount(statement));
  for (SQLUSMALLINT at = 1; at <= count; ++at) {
    SQLLEN type = 0;
    Check(statement, SQLColAttributeW(statement.get(), at, SQL_DESC_CONCISE_TYPE, nullptr, 0, nullptr, &type));
    columns.push_back(
        {Describe(statement, at, SQL_DESC_NAME), KindOf(type, Describe(statement, at, SQL_DESC_TYPE_NAME))});
  }
  return columns;
}

// "-.50" -> "-0.50", blanks and a plus sign dropped.
Text WrittenOut(std::string_view digits) {
  digits = Trim(digits);
  const bool negative = digits.starts_with('-');
  if (negative || digits.starts_with('+')) digits.remove_prefix(1);
  Text plain(negative ? "-" : "");
  if (digits.starts_with('.')) plain += '0';
  return plain += digits;
}

[[noreturn]] void ThrowUnreadable(std::string_view what) {
  throw Error(database_error::kStatement, "ODBC", Text(what) + " that the server sent can't be read.");
}

Variant CurrencyOf(std::string_view digits) {
  const std::optional<std::int64_t> units = CurrencyUnits(digits);
  if (!units) ThrowUnreadable("An amount");
  return Variant::Currency(*units);
}

Variant DateOf(const SQL_TIMESTAMP_STRUCT& stamp) {
  constexpr SQLUINTEGER kTick = 100;  // nanoseconds
  const std::optional<Moment> moment = FromCivil({stamp.year, stamp.month, stamp.day, stamp.hour, stamp.minute,
                                                  stamp.second, static_cast<int>(stamp.fraction / kTick)});
  if (!moment) ThrowUnreadable("A date");
  return Variant::Date(ToAutomationDate(*moment));
}

Variant TimeOf(const SQL_TIME_STRUCT& time) {
  const std::optional<Moment> moment = FromCivil({1899, 12, 30, time.hour, time.minute, time.second, 0});
  if (!moment) ThrowUnreadable("A time");
  return Variant::Date(ToAutomationDate(*moment));
}

// Reads the rows of one result; its buffer serves all texts.
class Reader {
 public:
  Reader(const Statement& statement, std::vector<Column> columns)
      : statement_(statement), columns_(std::move(columns)), buffer_(4096, u'\0') {}

  void ReadRow(RowSet& rows) {
    for (std::size_t at = 0; at < columns_.size(); ++at) {
      const auto number = static_cast<SQLUSMALLINT>(at + 1);
      if (columns_[at].kind != Kind::Text) {
        rows.Add(ReadValue(number, columns_[at].kind));
      } else if (ReadWide(number)) {
        rows.AddText(FromWide(wide_));
      } else {
        rows.Add(Variant::Null());
      }
    }
  }

 private:
  Variant ReadValue(SQLUSMALLINT column, Kind kind) {
    switch (kind) {
      case Kind::Boolean:
        return Fixed<unsigned char>(column, SQL_C_BIT, [](unsigned char bit) { return Variant(bit != 0); });
      case Kind::Short:
        return Fixed<std::int16_t>(column, SQL_C_SSHORT, [](std::int16_t value) { return Variant(value); });
      case Kind::Long:
        return Fixed<std::int32_t>(column, SQL_C_SLONG, [](std::int32_t value) { return Variant(value); });
      case Kind::BigInteger:
        return Fixed<std::int64_t>(column, SQL_C_SBIGINT, [](std::int64_t value) {
          const auto narrow = static_cast<Long>(value);
          return narrow == value ? Variant(narrow) : Variant::Decimal(std::to_string(value));
        });
      case Kind::Single:
        return Fixed<float>(column, SQL_C_FLOAT, [](float value) { return Variant(value); });
      case Kind::Double:
        return Fixed<double>(column, SQL_C_DOUBLE, [](double value) { return Variant(value); });
      case Kind::DateTime:
        return Fixed<SQL_TIMESTAMP_STRUCT>(column, SQL_C_TYPE_TIMESTAMP, DateOf);
      case Kind::TimeOfDay:
        return Fixed<SQL_TIME_STRUCT>(column, SQL_C_TYPE_TIME, TimeOf);
      case Kind::Decimal:
      case Kind::Currency:
        return ReadDigits(column, kind);
      case Kind::Text:
        break;
    }
    return {};
  }

  template <typename T, typename Make>
  Variant Fixed(SQLUSMALLINT column, SQLSMALLINT c_type, Make make) {
    T value{};
    SQLLEN indicator = 0;
    Check(statement_, SQLGetData(statement_.get(), column, c_type, &value, sizeof(value), &indicator));
    return indicator == SQL_NULL_DATA ? Variant::Null() : make(value);
  }

  Variant ReadDigits(SQLUSMALLINT column, Kind kind) {
    if (!ReadWide(column)) return Variant::Null();
    const Text digits = WrittenOut(FromWide(wide_));
    return kind == Kind::Currency ? CurrencyOf(digits) : Variant::Decimal(digits);
  }

  // The column's text, whatever its length, into `wide_`; false for Null.
  bool ReadWide(SQLUSMALLINT column) {
    wide_.clear();
    for (;;) {
      SQLLEN left = 0;
      const auto bytes = static_cast<SQLLEN>(buffer_.size()) * kWideUnit;
      const SQLRETURN outcome = SQLGetData(statement_.get(), column, SQL_C_WCHAR, ToSql(buffer_), bytes, &left);
      if (outcome == SQL_NO_DATA) return true;
      Check(statement_, outcome);
      if (left == SQL_NULL_DATA) return false;
      const bool more = left == SQL_NO_TOTAL || left > bytes - kWideUnit;
      const std::size_t got = more ? buffer_.size() - 1 : static_cast<std::size_t>(left / kWideUnit);
      wide_.append(buffer_, 0, got);
      if (!more) return true;
    }
  }

  const Statement& statement_;
  std::vector<Column> columns_;
  std::u16string buffer_;
  std::u16string wide_;
};

bool Fetch(const Statement& statement) {
  const SQLRETURN outcome = SQLFetch(statement.get());
  if (outcome == SQL_NO_DATA) return false;
  Check(statement, outcome);
  return true;
}

}  // namespace

SQLSMALLINT ColumnCount(const Statement& statement) {
  SQLSMALLINT count = 0;
  Check(statement, SQLNumResultCols(statement.get(), &count));
  return count;
}

Ref<RowSet> ReadRows(const Statement& statement) {
  std::vector<Column> columns = DescribeColumns(statement);
  std::vector<Text> names;
  for (const Column& column : columns) names.push_back(column.name);
  auto rows = New<RowSet>(std::move(names));
  Reader reader(statement, std::move(columns));
  while (Fetch(statement)) reader.ReadRow(*rows);
  return rows;
}

void SkipRows(const Statement& statement) {
  while (Fetch(statement)) {
  }
}

void Check(const Statement& statement, SQLRETURN outcome) {
  if (!SQL_SUCCEEDED(outcome)) throw ToError(Diagnostics(SQL_HANDLE_STMT, statement.get()));
}

}  // namespace rebate::odbc
