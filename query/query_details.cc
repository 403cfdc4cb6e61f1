#include "query/query_details.h"

#include <cctype>

#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "data/sql_text.h"
#include "query/lookup.h"
#include "query/query_module.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

std::string fieldText(const Recordset& rs, const char* name) {
  int i = rs.fieldIndex(name);
  return i < 0 ? std::string() : trim(rs.get(i).text());
}

bool isIdentifierChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$'; }

std::map<std::string, QueryDetails>*& activeHeaders() {
  thread_local std::map<std::string, QueryDetails>* headers = nullptr;
  return headers;
}

bool readsAsTrue(const std::string& s) {
  std::string u = upperTrim(s);
  return u == "Y" || u == "YES" || u == "T" || u == "TRUE" || u == "1" || u == "-1";
}

}  // namespace

std::string tableOfSql(const std::string& sql) {
  long p = instr(sql, "FROM", Compare::Text);
  while (p > 0) {
    // A whole word "FROM".
    bool before = p == 1 || !isIdentifierChar(sql[p - 2]);
    bool after = static_cast<size_t>(p + 3) >= sql.size() || !isIdentifierChar(sql[p + 3]);
    if (before && after) {
      size_t i = p + 3;
      while (i < sql.size() && std::isspace(static_cast<unsigned char>(sql[i]))) ++i;
      size_t start = i;
      while (i < sql.size() && isIdentifierChar(sql[i])) ++i;
      if (i > start) return ucase(sql.substr(start, i - start));
      break;
    }
    p = instr(p + 1, sql, "FROM", Compare::Text);
  }
  long v = instr(sql, ".VARIATION_ID", Compare::Text);
  if (v > 1) {
    size_t end = v - 1;
    size_t start = end;
    while (start > 0 && isIdentifierChar(sql[start - 1])) --start;
    if (end > start) return ucase(sql.substr(start, end - start));
  }
  return "";
}

std::string noteText(const std::string& noteId) {
  std::string id = trim(noteId);
  if (id.empty()) return "";
  Recordset rs = query::lookupRows("select NOTE_TEXT from ADMNOTE where SEQ_ID = '" + sqlQuote(id) + "'");
  if (!rs.isOpen() || rs.eof()) return "";
  return rs.get("NOTE_TEXT").text();
}

QueryHeaderScope::QueryHeaderScope() : outermost_(activeHeaders() == nullptr) {
  if (outermost_) activeHeaders() = &headers_;
}

QueryHeaderScope::~QueryHeaderScope() {
  if (outermost_) activeHeaders() = nullptr;
}

void gsubQueryDetails(const std::string& strQueryID, QueryDetails& udtDetails) {
  std::map<std::string, QueryDetails>* headers = activeHeaders();
  const std::string id = trim(strQueryID);
  if (headers != nullptr) {
    auto it = headers->find(id);
    if (it != headers->end()) {
      udtDetails = it->second;
      return;
    }
  }
  auto proc = query::procedure(query::kGridModule, "gsubQueryDetails");
  proc.variables([&] { return Dump().item("STRQUERYID:", strQueryID).text(); });
  proc.run([&](Steps& step) {
    QueryDetails d;
    step(10, [&] {
      Recordset rs = query::lookupRows("select * from ADMGRIDH where CODE_ID = '" + sqlQuote(trim(strQueryID)) + "'");
      if (!rs.isOpen() || rs.eof()) return;
      d.found = true;
      d.queryId = fieldText(rs, "CODE_ID");
      d.userId = fieldText(rs, "USER_ID");
      d.entityId = ucase(fieldText(rs, "ENTITY_ID"));
      d.description = fieldText(rs, "DESCRIPTION");
      d.accessByAll = readsAsTrue(fieldText(rs, "ACCESS_BY_ALL"));
      d.queryType = ucase(fieldText(rs, "QUERY_TYPE"));
      d.noteId = fieldText(rs, "NOTE_ID");
      d.applyAccessFilter = left(ucase(fieldText(rs, "APPLY_ACCESS_FILTER")), 1);
    });
    step(20, [&] {
      if (d.queryType == "U") {
        if (d.applyAccessFilter.empty()) d.applyAccessFilter = "N";
        // The table its note's SQL reads (gfncQueryEntity, from the row at hand).
        if (d.entityId.empty()) d.entityId = tableOfSql(noteText(d.noteId));
      }
      const std::string& f = d.applyAccessFilter;
      d.applyAccessFilter = (f == "N" || f == "0" || f == "F") ? "N" : "Y";
    });
    if (headers != nullptr) (*headers)[id] = d;
    udtDetails = std::move(d);
  });
}

std::string gfncQueryEntity(const std::string& strCodeID) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncQueryEntity");
  proc.variables([&] { return Dump().item("STRCODEID:", strCodeID).text(); });
  proc.run([&](Steps& step) {
    std::string type;
    std::string note;
    step(10, [&] {
      Recordset rs = query::lookupRows("select ENTITY_ID, QUERY_TYPE, NOTE_ID from ADMGRIDH where CODE_ID = '" +
                                   sqlQuote(trim(strCodeID)) + "'");
      if (!rs.isOpen() || rs.eof()) return;
      result = ucase(fieldText(rs, "ENTITY_ID"));
      type = ucase(fieldText(rs, "QUERY_TYPE"));
      note = fieldText(rs, "NOTE_ID");
    });
    if (!result.empty() || type != "U") return;
    step(20, [&] { result = tableOfSql(noteText(note)); });
  });
  return result;
}

bool gfncGridFieldEntity(const std::string& strGridID, const std::string& strColumn) {
  bool result = false;
  auto proc = query::procedure(query::kGridModule, "gfncGridFieldEntity");
  proc.variables([&] { return Dump().item("STRGRIDID:", strGridID).item("STRCOLUMN:", strColumn).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      Recordset rs = query::lookupRows("select ITEM_ID from ADMGRIDD where CODE_ID = '" + sqlQuote(trim(strGridID)) +
                                   "' and INCLUDE_YN = 'Y' and ITEM_ID like '%." + sqlQuote(trim(strColumn)) +
                                   "'");
      result = rs.isOpen() && !rs.eof();
    });
  });
  return result;
}

bool gfncQueryHasUDF(const std::string& strCodeID) {
  bool result = false;
  auto proc = query::procedure(query::kGridModule, "gfncQueryHasUDF");
  proc.variables([&] { return Dump().item("STRCODEID:", strCodeID).text(); });
  proc.run([&](Steps& step) {
    step(10, [&] {
      Recordset rs = query::lookupRows("select ITEM_ID from ADMGRIDD where CODE_ID = '" + sqlQuote(trim(strCodeID)) +
                                   "' and ITEM_ID like '%.UDF_%' and ( INCLUDE_YN = 'Y' or ( " +
                                   gfncEmptyCondition("QUERY_VALUE", "<>") + " and " +
                                   gfncEmptyCondition("QUERY_FUNCTION", "<>") + " ) )");
      result = rs.isOpen() && !rs.eof();
    });
  });
  return result;
}

}  // namespace orvalis
