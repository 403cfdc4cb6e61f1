// Recordset filter: the ADO criteria syntax.
#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "runtime/recordset.h"
#include "staff_recordset.h"

namespace orvalis {
namespace {

using test::staff;
using test::visibleIds;

TEST(RecordsetFilter, CriteriaTable) {
  struct Case {
    const char* criteria;
    const char* ids;
  } cases[] = {
      {"NAME = 'smith'", "1"},
      {"name <> 'SMITH'", "23456"},
      {"NAME LIKE 'SMITH*'", "12"},
      {"NAME LIKE '%smith'", "15"},
      {"NAME LIKE '*MITH*'", "125"},
      {"NAME = 'O''Brien'", "3"},
      {"AMOUNT = 10", "136"},
      {"AMOUNT > 10", "25"},
      {"AMOUNT <= 10", "1346"},
      {"AMOUNT >= 10 AND AMOUNT < 100", "1236"},
      {"AMOUNT < 0 OR AMOUNT > 50", "45"},
      {"(NAME = 'Jones' OR NAME = 'Adams') AND AMOUNT > 0", "6"},
      {"NAME = 'Jones' OR NAME = 'Adams' AND AMOUNT > 0", "46"},
      {"START = #06/04/2024#", "13"},
      {"START > #05/04/2024# AND START < #07/04/2024#", "13"},
      {"START >= '06/04/2024'", "135"},
      {"END_DATE = NULL", "135"},
      {"END_DATE <> NULL", "246"},
      {"END_DATE IS NULL", "135"},
      {"END_DATE > #01/04/2024#", "26"},
      {"[Dept Code] = 'HR'", "136"},
      {"ID = '4'", "4"},
      {"ID = 99", ""},
  };
  for (const auto& c : cases) {
    Recordset rs = staff();
    rs.setFilter(c.criteria);
    EXPECT_EQ(visibleIds(rs), c.ids) << c.criteria;
    EXPECT_EQ(rs.recordCount(), static_cast<long>(std::string(c.ids).size())) << c.criteria;
  }
}

TEST(RecordsetFilter, CursorGoesToFirstVisibleRowAndEmptyClears) {
  Recordset rs = staff();
  rs.moveLast();
  rs.setFilter("AMOUNT = 10");
  EXPECT_EQ(rs.get("ID"), Value(1));
  EXPECT_EQ(rs.filter(), "AMOUNT = 10");
  rs.setFilter("ID = 99");
  EXPECT_TRUE(rs.bof());
  EXPECT_TRUE(rs.eof());
  rs.setFilter("");
  EXPECT_EQ(rs.recordCount(), 6);
  EXPECT_EQ(rs.get("ID"), Value(1));
}

TEST(RecordsetFilter, BadCriteriaRaise) {
  auto number = [](const char* criteria) -> long {
    Recordset rs = staff();
    try {
      rs.setFilter(criteria);
    } catch (const Error& e) {
      return e.number();
    }
    return 0;
  };
  EXPECT_EQ(number("NOPE = 1"), err::kItemNotFound);
  EXPECT_EQ(number("NAME = "), err::kInvalidArgument);
  EXPECT_EQ(number("NAME = 'x"), err::kInvalidArgument);
  EXPECT_EQ(number("(NAME = 'x'"), err::kInvalidArgument);
  EXPECT_EQ(number("NAME 'x'"), err::kInvalidArgument);
  EXPECT_EQ(number("AMOUNT > NULL"), err::kInvalidArgument);
  EXPECT_EQ(number("START = #31/02/2024#"), err::kInvalidArgument);
}

}  // namespace
}  // namespace orvalis
