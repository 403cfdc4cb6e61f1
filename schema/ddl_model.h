// DdlModel: the tables of a schema DDL text, read back from the text.
//
// The DDL files keep one column per line ("NAME TYPE [NOT NULL],"), the key
// as "PRIMARY KEY (...)" and each statement ended by ";" at the end of a
// line. parseDdl() reads that layout into table definitions, so that the
// data dictionary, the drop list and the tests derive from the same text
// the database runs. splitStatements() cuts the text into statements
// without comments.
//
// Plain values; thread-compatible.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvalis {

struct ColumnDef {
  std::string name;     // upper case
  std::string sqlType;  // as declared, upper case: "VARCHAR(10)", "DATE", ...
  std::string baseType; // without the size: "VARCHAR", "DATE", ...
  int size = 0;         // VARCHAR length, 0 when none
  bool notNull = false;
};

struct TableDef {
  std::string name;
  std::vector<ColumnDef> columns;
  std::vector<std::string> primaryKey;

  const ColumnDef* column(std::string_view name) const;
};

struct IndexDef {
  std::string name;
  std::string table;
  std::vector<std::string> columns;
};

struct DdlModel {
  std::vector<TableDef> tables;  // in file order
  std::vector<IndexDef> indexes;

  const TableDef* table(std::string_view name) const;
};

// The statements of a DDL text, comments removed, each without its ";".
std::vector<std::string> splitStatements(std::string_view ddl);

// Reads the CREATE TABLE and CREATE INDEX statements of a DDL text. Raises
// orvalis::Error for a statement it cannot read.
DdlModel parseDdl(std::string_view ddl);

}  // namespace orvalis
