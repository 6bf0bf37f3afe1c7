#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/values/calendar.h"

namespace rebate {
namespace {

constexpr DateForm kDateTime{DateKind::DateTime};
constexpr DateForm kSmall{DateKind::SmallDateTime};
constexpr DateForm kDate{DateKind::Date};
constexpr DateForm kPrecise{DateKind::DateTime2, 7};

Text Read(std::string_view text, DateForm form = kDateTime) {
  const auto moment = ParseMoment(text, form);
  return moment ? StoredText(*moment, form.kind) : "none";
}

Moment At(std::string_view text) {
  return ParseMoment(text, kPrecise).value();
}

TEST(Calendar, ReadsDatesAsAServerDoes) {
  const struct {
    const char* text;
    const char* stored;
  } cases[] = {
      {"", "1900-01-01 00:00:00.000"},
      {"20240105", "2024-01-05 00:00:00.000"},
      {"240105", "2024-01-05 00:00:00.000"},
      {"500105", "1950-01-05 00:00:00.000"},
      {"2024", "2024-01-01 00:00:00.000"},
      {"2024-1-5", "2024-01-05 00:00:00.000"},
      {"2024/01/05 3:04", "2024-01-05 03:04:00.000"},
      {"2024.1.05", "2024-01-05 00:00:00.000"},
      {"1/5/2024", "2024-01-05 00:00:00.000"},
      {"1-5-49", "2049-01-05 00:00:00.000"},
      {"1.5.50", "1950-01-05 00:00:00.000"},
      {"Jan 5 2024", "2024-01-05 00:00:00.000"},
      {"5 January 2024", "2024-01-05 00:00:00.000"},
      {"January 5, 2024 3:04PM", "2024-01-05 15:04:00.000"},
      {"Jan  5 2024  3:04AM", "2024-01-05 03:04:00.000"},
      {"2024 jan 5", "2024-01-05 00:00:00.000"},
      {"05-JAN-2024 10:00", "2024-01-05 10:00:00.000"},
      {"Jan 5 24", "2024-01-05 00:00:00.000"},
      {"feb 2024", "2024-02-01 00:00:00.000"},
      {"2024-01-05T03:04:05", "2024-01-05 03:04:05.000"},
      {"2024-01-05T03:04:05.123", "2024-01-05 03:04:05.123"},
      {"3PM", "1900-01-01 15:00:00.000"},
      {"3:04:05:123PM", "1900-01-01 15:04:05.123"},
      {"3:04:05:5 pm", "1900-01-01 15:04:05.007"},
      {"3:04:05.5", "1900-01-01 03:04:05.500"},
      {"12:30AM", "1900-01-01 00:30:00.000"},
      {"12:30PM", "1900-01-01 12:30:00.000"},
      {"13:00PM", "1900-01-01 13:00:00.000"},
      {"14:05 2024-01-05", "2024-01-05 14:05:00.000"},
      {" 2024-02-29 ", "2024-02-29 00:00:00.000"},
      {"1753-01-01", "1753-01-01 00:00:00.000"},
      {"9999-12-31 23:59:59.997", "9999-12-31 23:59:59.997"},
  };
  for (const auto& c : cases) EXPECT_EQ(Read(c.text), c.stored) << c.text;
}

TEST(Calendar, RefusesWhatIsNoDate) {
  for (const char* text : {"2026-01-257",
                           "2026-13-01",
                           "2026-02-29",
                           "2024-00-10",
                           "1752-12-31",
                           "9999-12-31 23:59:59.999",
                           "abc",
                           "2024-01",
                           "24:00",
                           "12:60",
                           "12:00:60",
                           "12:5:",
                           "13:00AM",
                           "0:30PM",
                           "2024-01-05x",
                           "2024-01-05 10",
                           "20240105 1:2:3.1234",
                           "2024-01-05T10:00",
                           "2024-01-05T10:00:00PM",
                           "2024-1-5T10:00:00",
                           "Sept 5 2024",
                           "Jan 5 2024 6",
                           "Jan 5",
                           "32 Jan 2024",
                           "1/2/345",
                           "2024-01-05Z",
                           "12345",
                           "2024-01-05 2024-01-06",
                           "促"}) {
    EXPECT_EQ(Read(text), "none") << text;
  }
  EXPECT_TRUE(HasDateForm("2026-02-29", kDateTime));
  EXPECT_FALSE(HasDateForm("2026-01-257", kDateTime));
  EXPECT_EQ(ParseMoment("05/01/2024", kDateTime, DateOrder::DayFirst), At("2024-01-05"));
  EXPECT_EQ(ParseMoment("24.01.05", kDateTime, DateOrder::YearFirst), At("2024-01-05"));
  EXPECT_EQ(ParseMoment("2024-01-05", kDateTime, DateOrder::DayFirst), std::nullopt);
}

TEST(Calendar, KeepsWhatEachKindHasRoomFor) {
  const struct {
    const char* text;
    DateForm form;
    const char* stored;
  } cases[] = {
      {"2024-01-05 23:59:59.999", kDateTime, "2024-01-06 00:00:00.000"},
      {"2024-01-05 23:59:59.998", kDateTime, "2024-01-05 23:59:59.997"},
      {"2024-01-05 00:00:00.001", kDateTime, "2024-01-05 00:00:00.000"},
      {"2024-01-05 00:00:00.002", kDateTime, "2024-01-05 00:00:00.003"},
      {"2024-01-05 00:00:00.005", kDateTime, "2024-01-05 00:00:00.007"},
      {"2024-01-05 00:00:00.009", kDateTime, "2024-01-05 00:00:00.010"},
      {"2024-01-05 10:00:29.998", kSmall, "2024-01-05 10:00:00.000"},
      {"2024-01-05 10:00:29.999", kSmall, "2024-01-05 10:01:00.000"},
      {"2024-12-31 23:59:59", kSmall, "2025-01-01 00:00:00.000"},
      {"1899-12-31", kSmall, "none"},
      {"2079-06-06 23:59", kSmall, "2079-06-06 23:59:00.000"},
      {"2079-06-07", kSmall, "none"},
      {"2024-01-05 23:59:59.9999999", kDate, "2024-01-05"},
      {"0001-01-01", kDate, "0001-01-01"},
      {"2024-01-05 23:59:59.1234567", kPrecise, "2024-01-05 23:59:59.1234567"},
      {"2024-01-05 23:59:59.1234567", {DateKind::DateTime2, 3}, "2024-01-05 23:59:59.1230000"},
      {"2024-01-05 23:59:59.5", {DateKind::DateTime2, 0}, "2024-01-06 00:00:00.0000000"},
      {"9999-12-31 23:59:59.5", {DateKind::DateTime2, 0}, "none"},
      {"2024-01-05T10:00", kPrecise, "2024-01-05 10:00:00.0000000"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read(c.text, c.form), c.stored) << c.text;
    const auto moment = ReadStored(c.stored);
    if (moment) {
      EXPECT_EQ(Fit(*moment, c.form), moment) << c.stored;
    }
  }
  for (const char* text :
       {"2024-01-05 ", "2024-1-05", "2024-01-05 10:00:00", "2024-01-05 10:00:00,000", "2024-02-30"}) {
    EXPECT_FALSE(ReadStored(text)) << text;
  }
}

TEST(Calendar, WritesTheStylesOfTheConvertFunction) {
  const Moment moment = At("2024-01-05 15:04:05.1230000");
  const struct {
    int style;
    const char* text;
    const char* date;
  } cases[] = {
      {0, "Jan  5 2024  3:04PM", "2024-01-05"},
      {1, "01/05/24", "01/05/24"},
      {3, "05/01/24", "05/01/24"},
      {6, "05 Jan 24", "05 Jan 24"},
      {7, "Jan 05, 24", "Jan 05, 24"},
      {8, "15:04:05", "none"},
      {9, "Jan  5 2024  3:04:05:123PM", "Jan  5 2024"},
      {12, "240105", "240105"},
      {100, "Jan  5 2024  3:04PM", "Jan  5 2024"},
      {101, "01/05/2024", "01/05/2024"},
      {102, "2024.01.05", "2024.01.05"},
      {104, "05.01.2024", "05.01.2024"},
      {107, "Jan 05, 2024", "Jan 05, 2024"},
      {110, "01-05-2024", "01-05-2024"},
      {111, "2024/01/05", "2024/01/05"},
      {112, "20240105", "20240105"},
      {113, "05 Jan 2024 15:04:05:123", "05 Jan 2024"},
      {114, "15:04:05:123", "none"},
      {20, "2024-01-05 15:04:05", "2024-01-05"},
      {121, "2024-01-05 15:04:05.123", "2024-01-05"},
      {126, "2024-01-05T15:04:05.123", "2024-01-05"},
      {130, "none", "none"},
      {15, "none", "none"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FormatMoment(moment, kDateTime, c.style).value_or("none"), c.text) << c.style;
    EXPECT_EQ(FormatMoment(moment, kDate, c.style).value_or("none"), c.date) << c.style;
  }
  EXPECT_EQ(FormatMoment(moment, kPrecise, 0), "2024-01-05 15:04:05.1230000");
  EXPECT_EQ(FormatMoment(moment, {DateKind::DateTime2, 0}, 121), "2024-01-05 15:04:05");
  EXPECT_EQ(FormatMoment(At("2024-01-05 12:00"), kDateTime, 126), "2024-01-05T12:00:00");
  EXPECT_EQ(FormatMoment(At("2024-01-05"), kDateTime, 0), "Jan  5 2024 12:00AM");
}

TEST(Calendar, AddsAndCountsParts) {
  const struct {
    DatePart part;
    std::int64_t count;
    const char* from;
    const char* to;
    std::int64_t boundaries;
  } cases[] = {
      {DatePart::Month, 1, "2024-01-31", "2024-02-29", 1},
      {DatePart::Year, -1, "2024-02-29", "2023-02-28", -1},
      {DatePart::Quarter, 3, "2024-05-31", "2025-02-28", 3},
      {DatePart::Week, 2, "2024-01-06", "2024-01-20", 2},
      {DatePart::Day, -366, "2025-01-01", "2024-01-01", -366},
      {DatePart::Hour, -1, "1900-01-01", "1899-12-31 23:00", -1},
      {DatePart::Minute, 90, "2024-01-01 23:00", "2024-01-02 00:30", 90},
      {DatePart::Millisecond, 1, "2024-01-01 00:00:00.999", "2024-01-01 00:00:01", 1},
      {DatePart::Microsecond, 1, "2024-01-01", "2024-01-01 00:00:00.000001", 1},
      {DatePart::Nanosecond, 150, "2024-01-01", "2024-01-01 00:00:00.0000002", 200},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(AddToMoment(c.part, c.count, At(c.from)), At(c.to)) << c.from;
    EXPECT_EQ(MomentDifference(c.part, At(c.from), At(c.to)), c.boundaries) << c.from;
  }
  EXPECT_FALSE(AddToMoment(DatePart::Year, 8000, At("2024-01-01")));
  EXPECT_FALSE(AddToMoment(DatePart::Month, -2024 * 12, At("2024-01-01")));
  EXPECT_FALSE(AddToMoment(DatePart::Day, std::numeric_limits<std::int64_t>::max(), At("2024-01-01")));
  EXPECT_EQ(MomentDifference(DatePart::Year, At("2023-12-31 23:59"), At("2024-01-01")), 1);
  EXPECT_EQ(MomentDifference(DatePart::Week, At("2024-01-06"), At("2024-01-07")), 1);
  EXPECT_EQ(MomentDifference(DatePart::Nanosecond, At("0001-01-01"), At("9999-12-31")),
            std::numeric_limits<std::int64_t>::max());
}

TEST(Calendar, NamesParts) {
  const struct {
    const char* part;
    const char* date;
    std::int64_t value;
  } cases[] = {
      {"QQ", "2024-11-05", 4},
      {"dy", "2024-12-31", 366},
      {"dw", "2024-01-07", 1},
      {"dw", "1899-12-30", 7},
      {"ww", "2024-01-07", 2},
      {"isowk", "2021-01-03", 53},
      {"iso_week", "2024-12-30", 1},
      {"isoww", "9999-12-31", 52},
      {"ms", "1:02:03.4567890", 456},
      {"mcs", "1:02:03.4567890", 456789},
      {"ns", "1:02:03.4567890", 456789000},
  };
  for (const auto& c : cases) EXPECT_EQ(PartOfMoment(ParseDatePart(c.part).value(), At(c.date)), c.value) << c.part;
  EXPECT_EQ(NameOfPart(DatePart::Month, At("2024-09-01")), "September");
  EXPECT_EQ(NameOfPart(DatePart::Weekday, At("2026-11-23")), "Monday");
  EXPECT_EQ(NameOf(DatePart::IsoWeek), "iso_week");
  EXPECT_FALSE(ParseDatePart("tzoffset"));
}

TEST(Calendar, CountsDaysAsNumbersAndAsTheAutomationWorldDoes) {
  EXPECT_EQ(ToDays(At("1900-01-02 12:00")), 1.5);
  EXPECT_EQ(ToDays(At("1899-12-31 18:00")), -0.25);
  EXPECT_EQ(FromDays(-0.25), At("1899-12-31 18:00"));
  EXPECT_FALSE(FromDays(std::nan("")));
  EXPECT_FALSE(FromDays(1e7));
  const struct {
    const char* text;
    double days;
  } cases[] = {
      {"1899-12-30", 0}, {"1899-12-29 06:00:00", -1.25}, {"1900-01-01 12:00:00", 2.5}, {"0100-01-01", -657434}};
  for (const auto& c : cases) {
    EXPECT_EQ(ParseDate(c.text), c.days);
    EXPECT_EQ(DateText(c.days), c.text);
  }
  EXPECT_EQ(DateText(0.999999), "1899-12-31");
  for (const char* text :
       {"", "2024-02-30", "2024-01-05 ", "2024-01-05 10", "2024-01-05 10:00:00.12345678", "240105"}) {
    EXPECT_FALSE(ParseDate(text)) << text;
  }
}

}  // namespace
}  // namespace rebate
