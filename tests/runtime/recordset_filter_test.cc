// Recordset filter and sort: the ADO criteria syntax and sort keys.
#include <gtest/gtest.h>

#include <functional>

#include "runtime/error.h"
#include "runtime/recordset.h"

namespace orvalis {
namespace {

// ID, NAME, AMOUNT, START, END_DATE: six employees.
Recordset staff() {
  Recordset rs;
  rs.appendField("ID", ado::adInteger, 4);
  rs.appendField("NAME", ado::adVarChar, 40);
  rs.appendField("AMOUNT", ado::adDouble, 8);
  rs.appendField("START", ado::adDBTimeStamp, 8);
  rs.appendField("END_DATE", ado::adDBTimeStamp, 8);
  rs.appendField("Dept Code", ado::adVarChar, 10);
  struct Row {
    int id;
    const char* name;
    double amount;
    const char* start;
    const char* end;
    const char* dept;
  } rows[] = {
      {1, "Smith", 10, "06/04/2024", nullptr, "HR"},   {2, "smithers", 25.5, "01/04/2024", "30/04/2024", "IT"},
      {3, "O'Brien", 10, "06/04/2024", nullptr, "hr"}, {4, "Jones", -3, "31/12/2023", "01/01/2024", "IT"},
      {5, "Blacksmith", 100, "07/04/2024", nullptr, "FIN"}, {6, "Adams", 10, "05/04/2024", "06/04/2024", "HR"},
  };
  for (const auto& r : rows) {
    rs.addNew();
    rs.set("ID", Value(r.id));
    rs.set("NAME", Value(r.name));
    rs.set("AMOUNT", Value(r.amount));
    rs.set("START", Value(r.start));
    if (r.end) rs.set("END_DATE", Value(r.end));
    rs.set("Dept Code", Value(r.dept));
  }
  rs.moveFirst();
  return rs;
}

std::string visibleIds(Recordset& rs) {
  std::string ids;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) ids += rs.get("ID").text();
  return ids;
}

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

TEST(RecordsetSort, StableWithNullFirstAndDescending) {
  Recordset rs = staff();
  rs.setSort("AMOUNT");
  EXPECT_EQ(visibleIds(rs), "413625");  // equal amounts keep storage order
  rs.setSort("AMOUNT DESC, NAME");
  EXPECT_EQ(visibleIds(rs), "526314");
  rs.setSort("END_DATE ASC");
  EXPECT_EQ(visibleIds(rs), "135462");
  rs.setSort("[Dept Code], ID DESC");  // texts ignore case
  EXPECT_EQ(visibleIds(rs), "563142");
  rs.setSort("");
  EXPECT_EQ(visibleIds(rs), "123456");
}

TEST(RecordsetSort, CombinesWithFilter) {
  Recordset rs = staff();
  rs.setSort("NAME");
  rs.setFilter("AMOUNT = 10");
  EXPECT_EQ(visibleIds(rs), "631");
  rs.setFilter("");
  EXPECT_EQ(visibleIds(rs), "654312");
  EXPECT_THROW(rs.setSort("NOPE"), Error);
  EXPECT_THROW(rs.setSort("NAME UP"), Error);
}

}  // namespace
}  // namespace orvalis
