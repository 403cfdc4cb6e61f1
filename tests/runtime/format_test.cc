// The Format function: number patterns, named formats, date patterns and
// texts that read as numbers or dates.
#include <gtest/gtest.h>

#include "runtime/basic_date.h"
#include "runtime/basic_number.h"

namespace orvalis {
namespace {

struct Case {
  Value value;
  const char* pattern;
  const char* expected;
};

void expectAll(const std::vector<Case>& cases) {
  for (const auto& c : cases) {
    EXPECT_EQ(format(c.value, c.pattern), c.expected) << c.value.text() << " with \"" << c.pattern << "\"";
  }
}

TEST(FormatNumber, PatternsTheComponentUses) {
  expectAll({
      {1234.5, "#,##0.00000", "1,234.50000"},
      {0.5, "#0.00000", "0.50000"},
      {12.3456789, "#0.00000", "12.34568"},
      {1234567.891, "#,##0.00", "1,234,567.89"},
      {0.0, "#,##0.00", "0.00"},
      {-1234.5, "#,##0.00", "-1,234.50"},
      {7, "00", "07"},
      {123, "00", "123"},
      {5, "0000", "0005"},
      {2024, "0000", "2024"},
      {0.4, "0", "0"},
      {0, "#", ""},
      {5.5, "#", "6"},
      {1000000, "#,##0", "1,000,000"},
      {999.995, "#,##0.00", "1,000.00"},
      {0.5, ".00", ".50"},
      {5.5, ".00", "5.50"},
  });
}

TEST(FormatNumber, RoundsHalvesAwayFromZero) {
  // Unlike Round, Format takes halves away from zero, reading the value at
  // 15 significant digits.
  expectAll({
      {0.5, "0", "1"},
      {1.5, "0", "2"},
      {2.5, "0", "3"},
      {-2.5, "0", "-3"},
      {0.125, "0.00", "0.13"},
      {2.675, "0.00", "2.68"},
      {1.005, "0.00", "1.01"},
      {0.004, "0.00", "0.00"},
  });
}

TEST(FormatNumber, NamedFormats) {
  expectAll({
      {1234.5, "Standard", "1,234.50"},
      {0.0, "Standard", "0.00"},
      {-1, "Standard", "-1.00"},
      {1234.567, "Fixed", "1234.57"},
      {1234.5, "General Number", "1234.5"},
      {0.256, "Percent", "25.60%"},
      {1, "standard", "1.00"},
      {2, "Yes/No", "Yes"},
      {0, "True/False", "False"},
  });
}

TEST(FormatNumber, SectionsAndLiterals) {
  expectAll({
      {-5, "0;(0)", "(5)"},
      {5, "0;(0)", "5"},
      {0, "0;(0);\"nil\"", "nil"},
      {123456, "000-000", "123-456"},
      {12.5, "\"GBP \"0.00", "GBP 12.50"},
      {0.5, "0%", "50%"},
  });
}

TEST(FormatNumber, TextsAndEmptyValues) {
  expectAll({
      {"1,234.5", "0.00", "1234.50"},
      {" 42 ", "0000", "0042"},
      {"abc", "0.00", "abc"},
      {Value::null(), "0.00", ""},
      {Value(), "Standard", ""},
      {"x", "", "x"},
      {2.5, "", "2.5"},
  });
}

TEST(FormatDate, DatePatterns) {
  Value d(*DateTime::fromParts(2024, 4, 6, 9, 5, 7));
  expectAll({
      {d, "DD/MM/YY", "06/04/24"},
      {d, "YYMMDD", "240406"},
      {d, "HH:MM:SS", "09:05:07"},
      {d, "DD/MM/YYYY", "06/04/2024"},
      {d, "YYYY-MM-DD", "2024-04-06"},
      {d, "DD-Mmm-YYYY", "06-Apr-2024"},
      {d, "DD-MMM-YYYY", "06-APR-2024"},
      {d, "dd-mmm-yyyy", "06-apr-2024"},
      {d, "D Mmmm YYYY", "6 April 2024"},
      {d, "YYYY", "2024"},
      {d, "MM", "04"},
      {d, "DD", "06"},
      {d, "HH", "09"},
      {d, "NN", "05"},
      {d, "nn", "05"},
      {d, "SS", "07"},
      {d, "hh:nn", "09:05"},
      {d, "MM:SS", "05:07"},
      {d, "DD/MM/YYYY HH:MM", "06/04/2024 09:05"},
      {d, "D/M/YY", "6/4/24"},
      {d, "Ddd DD", "Sat 06"},
      {d, "q", "2"},
      {d, "hh:nn AM/PM", "09:05 AM"},
      {d, "\"Day \"DD", "Day 06"},
      {d, "Short Date", "06/04/2024"},
      {d, "Medium Date", "06-Apr-24"},
      {d, "Long Date", "06 April 2024"},
  });
  Value afternoon(*DateTime::fromParts(2024, 4, 6, 12, 30, 0));
  EXPECT_EQ(format(afternoon, "h:nn am/pm"), "12:30 pm");
}

TEST(FormatDate, TextsAndNumbersAsDates) {
  expectAll({
      {"06/04/2024", "YYYY-MM-DD", "2024-04-06"},
      {"2024-04-06 10:30:00", "DD/MM/YYYY HH:NN", "06/04/2024 10:30"},
      {45388, "DD/MM/YYYY", "06/04/2024"},
      {"not a date", "DD/MM/YYYY", "not a date"},
  });
}

}  // namespace
}  // namespace orvalis
