// Six employees in a recordset, shared by the filter and sort tests.
#pragma once

#include <string>

#include "runtime/recordset.h"

namespace orvalis::test {

// ID, NAME, AMOUNT, START, END_DATE: six employees.
inline Recordset staff() {
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

inline std::string visibleIds(Recordset& rs) {
  std::string ids;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) ids += rs.get("ID").text();
  return ids;
}

}  // namespace orvalis::test
