#include "schema/ddl_model.h"

#include <cctype>
#include <cstdlib>

#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

[[noreturn]] void unreadable(const std::string& statement, const std::string& why) {
  throw Error(err::kInvalidProcedureCall, "ORVALIS.Schema",
              "cannot read the schema statement (" + why + "): " + left(statement, 80));
}

// The text between the first "(" at or after from and its matching ")".
std::string bracketed(const std::string& s, size_t from, size_t* end) {
  size_t open = s.find('(', from);
  if (open == std::string::npos) return {};
  int depth = 0;
  for (size_t i = open; i < s.size(); ++i) {
    if (s[i] == '(') ++depth;
    if (s[i] == ')' && --depth == 0) {
      if (end) *end = i;
      return s.substr(open + 1, i - open - 1);
    }
  }
  return {};
}

// Splits at commas outside brackets.
std::vector<std::string> topLevelItems(const std::string& s) {
  std::vector<std::string> items;
  std::string current;
  int depth = 0;
  for (char ch : s) {
    if (ch == '(') ++depth;
    if (ch == ')') --depth;
    if (ch == ',' && depth == 0) {
      items.push_back(trim(current));
      current.clear();
    } else {
      current += ch;
    }
  }
  if (!trim(current).empty()) items.push_back(trim(current));
  return items;
}

std::vector<std::string> nameList(const std::string& s) {
  std::vector<std::string> names;
  for (const std::string& item : split(s, ",")) names.push_back(upperTrim(item));
  return names;
}

// The first word of s and the rest after it.
std::string firstWord(const std::string& s, std::string* rest) {
  size_t i = 0;
  while (i < s.size() && !std::isspace(static_cast<unsigned char>(s[i]))) ++i;
  if (rest) *rest = trim(s.substr(i));
  return s.substr(0, i);
}

ColumnDef readColumn(const std::string& item, const std::string& statement) {
  ColumnDef c;
  std::string rest;
  c.name = ucase(firstWord(item, &rest));
  if (c.name.empty() || rest.empty()) unreadable(statement, "column \"" + item + "\"");
  std::string upperRest = ucase(rest);
  size_t notNull = upperRest.find("NOT NULL");
  c.notNull = notNull != std::string::npos;
  c.sqlType = trim(c.notNull ? upperRest.substr(0, notNull) : upperRest);
  size_t open = c.sqlType.find('(');
  c.baseType = trim(c.sqlType.substr(0, open));
  if (open != std::string::npos) c.size = std::atoi(c.sqlType.c_str() + open + 1);
  return c;
}

}  // namespace

const ColumnDef* TableDef::column(std::string_view name) const {
  for (const ColumnDef& c : columns) {
    if (equalsNoCase(c.name, name)) return &c;
  }
  return nullptr;
}

const TableDef* DdlModel::table(std::string_view name) const {
  for (const TableDef& t : tables) {
    if (equalsNoCase(t.name, name)) return &t;
  }
  return nullptr;
}

std::vector<std::string> splitStatements(std::string_view ddl) {
  std::vector<std::string> statements;
  std::string current;
  size_t pos = 0;
  while (pos <= ddl.size()) {
    size_t eol = ddl.find('\n', pos);
    if (eol == std::string_view::npos) eol = ddl.size();
    std::string line(ddl.substr(pos, eol - pos));
    pos = eol + 1;
    // The schema files keep "--" comments on lines of their own or after
    // the text; no literal in them holds "--".
    size_t comment = line.find("--");
    if (comment != std::string::npos) line.erase(comment);
    line = rtrim(line);
    if (trim(line).empty()) continue;
    bool ends = !line.empty() && line.back() == ';';
    if (ends) line.pop_back();
    if (!current.empty()) current += '\n';
    current += line;
    if (ends) {
      if (!trim(current).empty()) statements.push_back(trim(current));
      current.clear();
    }
  }
  if (!trim(current).empty()) statements.push_back(trim(current));
  return statements;
}

DdlModel parseDdl(std::string_view ddl) {
  DdlModel model;
  for (std::string statement : splitStatements(ddl)) {
    for (char& ch : statement) {
      if (ch == '\n' || ch == '\t' || ch == '\r') ch = ' ';
    }
    std::string upper = ucase(statement);
    if (startsWith(upper, "CREATE TABLE ")) {
      TableDef table;
      table.name = ucase(firstWord(trim(statement.substr(13)), nullptr));
      size_t end = 0;
      std::string body = bracketed(statement, 13, &end);
      if (body.empty()) unreadable(statement, "no column list");
      for (const std::string& item : topLevelItems(body)) {
        std::string upperItem = ucase(item);
        if (startsWith(upperItem, "PRIMARY KEY")) {
          table.primaryKey = nameList(bracketed(item, 0, nullptr));
        } else {
          table.columns.push_back(readColumn(item, statement));
        }
      }
      model.tables.push_back(std::move(table));
    } else if (startsWith(upper, "CREATE INDEX ") || startsWith(upper, "CREATE UNIQUE INDEX ")) {
      IndexDef index;
      size_t on = upper.find(" ON ");
      if (on == std::string::npos) unreadable(statement, "no ON");
      std::string head = trim(statement.substr(0, on));
      index.name = ucase(head.substr(head.rfind(' ') + 1));
      std::string target = trim(statement.substr(on + 4));
      index.table = ucase(firstWord(target, nullptr));
      size_t paren = index.table.find('(');
      if (paren != std::string::npos) index.table.erase(paren);
      index.columns = nameList(bracketed(target, 0, nullptr));
      model.indexes.push_back(std::move(index));
    } else {
      unreadable(statement, "not CREATE TABLE or CREATE INDEX");
    }
  }
  return model;
}

}  // namespace orvalis
