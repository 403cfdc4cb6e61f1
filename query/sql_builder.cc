#include "query/sql_builder.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <vector>

#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/dialect_functions.h"
#include "data/dictionary.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "diary/absence_year.h"
#include "payroll/payroll_calendar.h"
#include "query/access.h"
#include "query/access_user.h"
#include "query/condition_group.h"
#include "query/dialect_fragments.h"
#include "runtime/keyed_text.h"
#include "query/lookup.h"
#include "query/org_structure.h"
#include "query/query_details.h"
#include "query/query_module.h"
#include "query/query_values.h"
#include "query/sql_identifiers.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/flags.h"

namespace orvalis {

namespace {

// ---- Module state of the build under way ----

struct BuilderState {
  std::string from;
  std::string extraWhere;
  std::set<std::string> joined;  // aliases joined so far (upper case)
  std::vector<std::string> warnings;
};

BuilderState& state() {
  static BuilderState s;
  return s;
}

// Query headers are read once per build (gfncBuildSQL, gfncBuildWhere and
// gfncBuildSelect each need them), or once per caller's QueryHeaderScope.
class BuildScope {
 public:
  BuildScope() = default;
  BuildScope(const BuildScope&) = delete;
  BuildScope& operator=(const BuildScope&) = delete;

 private:
  QueryHeaderScope headers_;
  FieldRightsScope rights_;
};

QueryDetails queryDetails(const std::string& queryId) {
  QueryDetails d;
  gsubQueryDetails(queryId, d);
  return d;
}

std::string variationQuoted() { return sqlQuote(gfncCompanyCode()); }

std::string applyFlag(const std::string& strApplyAccess) {
  return left(upperTrim(strApplyAccess), 1) == "N" ? "N" : "Y";
}

std::string withoutListPunctuation(const std::string& value) {
  std::string out;
  for (char c : value) {
    if (c != '(' && c != ')' && c != '\'') out += c;
  }
  return out;
}

// ---- Joins ----

// A left outer join of "table [alias]" on "left = <alias>.<key>", in the
// dialect's form. Returns false when the alias was joined already.
bool addKeyJoin(Dialect d, const std::string& table, const std::string& alias, const std::string& leftColumn,
                const std::string& key) {
  BuilderState& s = state();
  const std::string name = alias.empty() ? table : alias;
  if (!s.joined.insert(ucase(name)).second) return false;
  const std::string tableAndAlias = alias.empty() ? table : table + " " + alias;
  if (fragments::oracleJoins(d)) {
    s.from += ", " + tableAndAlias;
    s.extraWhere += " and " + leftColumn + " = " + name + "." + key + "(+)";
  } else {
    s.from += " LEFT JOIN " + tableAndAlias + " ON " + leftColumn + " = " + name + "." + key;
  }
  return true;
}

// The variation-scoped master joins of the driving table (PNLVACANT for
// vacancy tables; PNLEMPMST and PNLEMPMSTX for employee tables).
void addMasterJoins(Dialect d, const std::string& t, const std::string& v, bool hasEmp) {
  BuilderState& s = state();
  const bool oracle = fragments::oracleJoins(d);
  if (t != "PNLEMPMST" && t != "PNLVACANT") {
    if (startsWith(t, "PNLCAND") || t == "PNLVACRES" || t == "PNLVACST") {
      s.joined.insert("PNLVACANT");
      if (oracle) {
        s.from += ", PNLVACANT";
        s.extraWhere = " and '" + v + "' = PNLVACANT.VARIATION_ID(+) " + " and " + t +
                       ".VACANCY_ID = PNLVACANT.CODE_ID(+)";
      } else {
        s.from += " LEFT JOIN PNLVACANT ON '" + v + "' = PNLVACANT.VARIATION_ID and " + t +
                  ".VACANCY_ID = PNLVACANT.CODE_ID";
      }
    } else if (hasEmp) {
      s.joined.insert("PNLEMPMST");
      if (oracle) {
        s.from += ", PNLEMPMST";
        s.extraWhere = " and '" + v + "' = PNLEMPMST.VARIATION_ID(+)" + " and " + t + ".EMP_ID = PNLEMPMST.EMP_ID(+)";
      } else {
        s.from += " LEFT JOIN PNLEMPMST ON '" + v + "' = PNLEMPMST.VARIATION_ID and " + t +
                  ".EMP_ID = PNLEMPMST.EMP_ID";
      }
    }
  }
  if (!startsWith(t, "PNLVAC") && !startsWith(t, "PNLCAND") && hasEmp) {
    s.joined.insert("PNLEMPMSTX");
    if (oracle) {
      s.from += ", PNLEMPMSTX";
      s.extraWhere += " and '" + v + "' = PNLEMPMSTX.VARIATION_ID(+)" + " and " + t + ".EMP_ID = PNLEMPMSTX.EMP_ID(+)";
    } else {
      s.from += " LEFT JOIN PNLEMPMSTX ON '" + v + "' = PNLEMPMSTX.VARIATION_ID and " + t +
                ".EMP_ID = PNLEMPMSTX.EMP_ID";
    }
  }
}

// The code table of a column joined for its description; returns the name
// (table or alias) to read DESCRIPTION from.
std::string addCodeTableJoin(Dialect d, const std::string& codeTable, const std::string& column,
                             const std::string& v) {
  BuilderState& s = state();
  std::string name = codeTable;
  for (int n = 2; s.joined.count(ucase(name)); ++n) name = codeTable + "__" + std::to_string(n);
  s.joined.insert(ucase(name));
  const std::string tableAndAlias = name == codeTable ? codeTable : codeTable + " " + name;
  if (fragments::oracleJoins(d)) {
    s.from += ", " + tableAndAlias;
    s.extraWhere += " and ('" + v + "' = " + name + ".VARIATION_ID(+) or 'AUTHORISE' = " + name +
                    ".VARIATION_ID(+) or 'PROPOSE' = " + name + ".VARIATION_ID(+)) and " + column + " = " + name +
                    ".CODE_ID(+)";
  } else {
    s.from += " LEFT JOIN " + tableAndAlias + " ON ('" + v + "' = " + name + ".VARIATION_ID or 'AUTHORISE' = " +
              name + ".VARIATION_ID or 'PROPOSE' = " + name + ".VARIATION_ID) and " + column + " = " + name +
              ".CODE_ID";
  }
  return name;
}

bool isCodeTable(const std::string& table) {
  return !fieldDataType(table + ".CODE_ID").empty() && !fieldDataType(table + ".DESCRIPTION").empty() &&
         !fieldDataType(table + ".VARIATION_ID").empty();
}

// ---- Select list ----

class SelectList {
 public:
  explicit SelectList(Dialect d) : dialect_(d) {}

  // An expression shown under a name; a name already shown gets the alias
  // "<TABLE>__<NAME>".
  void add(const std::string& expr, const std::string& table, const std::string& name, bool plain = false) {
    std::string shown = name;
    if (!names_.insert(ucase(name)).second) {
      shown = table + "__" + name;
      names_.insert(ucase(shown));
      items_.push_back(expr + " AS " + shown);
      return;
    }
    items_.push_back(plain ? expr : expr + " as " + shown);
  }
  void addRaw(const std::string& item, const std::string& name) {
    names_.insert(ucase(name));
    items_.push_back(item);
  }
  bool empty() const { return items_.empty(); }
  std::string text() const { return join(items_, ", "); }
  Dialect dialect() const { return dialect_; }

 private:
  Dialect dialect_;
  std::vector<std::string> items_;
  std::set<std::string> names_;
};

const char* const kAddressColumns[] = {"ADD_1",        "ADD_2",        "ADD_3",     "ADD_4", "ADD_5",      "POST_CODE",
                                       "PHONE_HOME",   "PHONE_OFFICE", "PHONE_FAX", "NAME",  "CONTACT_ID", "E_MAIL"};

void addColumn(SelectList& list, const std::string& driving, const std::string& field,
               const std::string& durationFactor) {
  const Dialect d = list.dialect();
  const size_t dot = field.find('.');
  const std::string table = field.substr(0, dot);
  const std::string column = field.substr(dot + 1);
  const std::string v = variationQuoted();

  if (column == "NOTE_ID") {
    std::string alias = state().joined.count("ADMNOTE") ? table + "__NOTE" : "";
    addKeyJoin(d, "ADMNOTE", alias, field, "SEQ_ID");
    list.add((alias.empty() ? std::string("ADMNOTE") : alias) + ".NOTE_TEXT", table, "NOTE_TEXT", true);
    return;
  }
  if (field == "PNLEMPMST.HOME_PHONE_HOME") {
    addKeyJoin(d, "ADMADRES", "HOME_PHONE", "PNLEMPMST.HOME_ADD_ID", "SEQ_ID");
    list.add("rtrim(HOME_PHONE.PHONE_HOME)", table, "HOME_PHONE_HOME");
    return;
  }
  if (column.size() > 7 && endsWithNoCase(column, "_ADD_ID")) {
    std::string alias = column.substr(0, column.size() - 7);
    if (!addKeyJoin(d, "ADMADRES", alias, field, "SEQ_ID")) {
      alias = table + "__" + alias;
      addKeyJoin(d, "ADMADRES", alias, field, "SEQ_ID");
    }
    for (const char* c : kAddressColumns) list.add(alias + "." + c, table, alias + c);
    return;
  }
  if (column == "SEQ_ID" && gfncNumericSEQ_ID(table)) {
    list.addRaw(fragments::paddedSeqId(d, table), "SEQ_ID");
    return;
  }
  if (driving == "PNLEMPABS" && field == "PNLEMPABS.DURATION" && durationFactor != "1.00") {
    list.add("(PNLEMPABS.DURATION / " + durationFactor + " )", table, "DURATION");
    return;
  }
  if (gfncUnifaceSmallValue(field)) {
    list.add("(" + field + " / 100.00)", table, column);
    return;
  }
  const std::string codeTable = upperTrim(gfncGetFKTable(field));
  if (!codeTable.empty() && isIdentifier(codeTable) && codeTable != "PNLEMPMST" && codeTable != table &&
      codeTable != driving && column != "REFERENCE_ID" && isCodeTable(codeTable)) {
    // A vacancy table's own vacancy is joined already (the master join).
    const bool masterVacancy = codeTable == "PNLVACANT" && column == "VACANCY_ID" && table == driving &&
                               state().joined.count("PNLVACANT");
    std::string name = masterVacancy ? codeTable : addCodeTableJoin(d, codeTable, field, v);
    list.add("rtrim(" + name + ".DESCRIPTION)", table, column);
    return;
  }
  list.add(field, table, column, true);
}

// ---- Criteria ----

struct Criterion {
  std::string field;
  std::string function;
  std::string value;
};

std::string criterionClause(Dialect d, Criterion c, const std::string& type, std::string& tmpl,
                            bool& templateRead) {
  // A value written with its quotes doubled is taken as meant; every
  // literal is quoted again when it is written.
  if (c.value.find("''") != std::string::npos) c.value = replace(c.value, "''", "'");
  const std::string code = upperTrim(c.function);
  auto templateId = [&]() -> const std::string& {
    if (!templateRead) {
      tmpl = payroll::sessionTemplateId();
      templateRead = true;
    }
    return tmpl;
  };
  std::string compareField = c.field;
  if (c.field == "PNLEMPMST.HOME_PHONE_HOME") {
    if (d == Dialect::SQLite || d == Dialect::PostgreSQL) {
      addKeyJoin(d, "ADMADRES", "HOME_PHONE", "PNLEMPMST.HOME_ADD_ID", "SEQ_ID");
      compareField = "HOME_PHONE.PHONE_HOME";
    } else {
      compareField = "ADMADRES.PHONE_HOME";
    }
  }
  const std::string token = upperTrim(c.value);
  if (type == "D" && (token == "<YYYY>" || token == "<MM>" || token == "<DD>")) {
    compareField = fragments::datePart(d, token.substr(1, token.size() - 2), compareField);
  }
  auto parse = [&](const std::string& v) {
    std::string value = trim(v);
    std::string bare = value;
    while (!bare.empty() && (bare.front() == '<' || bare.front() == '[')) bare.erase(0, 1);
    const bool payroll = isPayrollVariable(bare);
    // The session's template is looked up only for the calendar's names.
    const std::string t = isPayrollPeriodName(bare) ? templateId() : std::string();
    const bool angle = value.size() >= 2 && value.front() == '<' && value.back() == '>';
    // "[THIS_PERIOD]" is resolved here and then written as a literal;
    // "<THIS_PERIOD>" is resolved by the value parser (form values first).
    if (payroll && !angle) value = gfncParsePayrollVariable(t, value);
    return fncParseValue(c.function, c.field, type, value, t);
  };

  std::string value;
  std::string op;
  if (code == "IN" || code == "NI") {
    std::vector<std::string> parsed;
    for (const std::string& item : split(withoutListPunctuation(c.value), ",")) parsed.push_back(parse(item));
    value = "(" + join(parsed, ", ") + ")";
  } else if (code == "BN" || code == "NB") {
    std::vector<std::string> bounds = split(withoutListPunctuation(c.value), ",");
    if (bounds.size() < 2) throw Error(err::kSubscriptOutOfRange, "ORVALIS", "Subscript out of range");
    std::string lower = parse(bounds[0]);
    std::string upper = parse(bounds[1]);
    value = code == "BN" ? lower + " and " + compareField + " <= " + upper : lower + " or " + compareField + " > " + upper;
  } else {
    value = parse(c.value);
    if (isListVariable(trim(c.value)) && (code == "EQ" || code == "<>")) {
      op = code == "EQ" ? "in" : "not in";
      value = "(" + value + ")";
    }
  }
  if (op.empty()) op = fncMapQueryFunctionToSQL(c.function, value);
  if (!isOperatorText(op)) return "";
  op = fragments::likeOperator(d, op);

  std::string clause = compareField + " " + op + " " + value;
  const std::string lop = lcase(op);
  // A date part is text whatever the field's type.
  const std::string testType = compareField == c.field ? type : "S";
  if (lop == "is" || lop == "is not") clause = fragments::emptyTest(d, compareField, testType, lop == "is" ? "=" : "<>");
  if (code == "NI" || code == "NC") clause = "(" + clause + " OR " + fragments::emptyTest(d, compareField, testType, "=") + ")";
  if (code == "NB") clause = "(" + clause + ")";
  return clause;
}

// The note's hand-written condition joined to the criteria.
void addNoteCondition(std::string& where, const std::string& note) {
  std::string text = trim(note);
  if (text.empty()) return;
  std::string connective = "AND";
  std::string condition;
  long p = instr(text, "WHERE ", Compare::Text);
  if (p > 0) {
    condition = trim(mid(text, p + 6));
  } else if (startsWithNoCase(text, "AND ")) {
    condition = trim(mid(text, 5));
  } else if (startsWithNoCase(text, "OR ")) {
    connective = "OR";
    condition = trim(mid(text, 4));
  } else {
    condition = text;
  }
  if (condition.empty()) return;
  where = where.empty() ? condition : where + " " + connective + " " + condition;
}

// ---- Statement scanning ----

bool isWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$' || c == '.'; }

// 0-based position of the next top-level keyword at or after from, or npos.
size_t findTopLevel(const std::string& sql, const std::string& keyword, size_t from) {
  int depth = 0;
  bool quoted = false;
  for (size_t i = 0; i < sql.size(); ++i) {
    char c = sql[i];
    if (quoted) {
      if (c == '\'') quoted = false;
      continue;
    }
    if (c == '\'') {
      quoted = true;
    } else if (c == '(') {
      ++depth;
    } else if (c == ')') {
      --depth;
    } else if (depth == 0 && i >= from && (i == 0 || !isWordChar(sql[i - 1])) &&
               sql.size() - i >= keyword.size() && equalsNoCase(sql.substr(i, keyword.size()), keyword) &&
               (i + keyword.size() == sql.size() || !isWordChar(sql[i + keyword.size()]))) {
      return i;
    }
  }
  return std::string::npos;
}

// 0-based position of the first top-level clause that ends a WHERE text
// (ORDER BY, GROUP BY, HAVING, LIMIT), or npos.
size_t whereTextEnd(const std::string& sql, size_t from) {
  size_t end = std::string::npos;
  for (const char* keyword : {"ORDER", "GROUP", "HAVING", "LIMIT"}) {
    end = std::min(end, findTopLevel(sql, keyword, from));
  }
  return end;
}

// Whether a statement names a table as a whole word.
bool mentionsTable(const std::string& sql, const std::string& table) {
  const std::string u = ucase(sql);
  const std::string name = ucase(table);
  for (size_t p = u.find(name); p != std::string::npos; p = u.find(name, p + 1)) {
    bool before = p == 0 || !isWordChar(u[p - 1]) || u[p - 1] == '.';
    bool after = p + name.size() >= u.size() || !isWordChar(u[p + name.size()]) || u[p + name.size()] == '.';
    if (before && after) return true;
  }
  return false;
}

}  // namespace

const std::string& builderFrom() { return state().from; }
const std::string& builderExtraWhere() { return state().extraWhere; }
const std::vector<std::string>& builderWarnings() { return state().warnings; }

long fncWhereIndex(const std::string& strSQL) {
  size_t from = findTopLevel(strSQL, "FROM", 0);
  if (from == std::string::npos) return 0;
  size_t where = findTopLevel(strSQL, "WHERE", from + 4);
  if (where == std::string::npos || where == 0) return 0;
  if (!std::isspace(static_cast<unsigned char>(strSQL[where - 1]))) return 0;
  return static_cast<long>(where);  // 1-based position of the blank before WHERE
}

std::string gfncBuildWhere(const std::string& strAccess, const std::string& strQueryID,
                           const std::string& strApplyAccess) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncBuildWhere");
  proc.variables([&] {
    return Dump()
        .item("STRACCESS:", strAccess)
        .item("STRQUERYID:", strQueryID)
        .item("STRAPPLYACCESS:", strApplyAccess)
        .text();
  });
  proc.run([&](Steps& step) {
    const std::string flag = applyFlag(strApplyAccess);
    const std::string id = trim(strQueryID);
    const Dialect d = currentDialect();
    QueryDetails details;
    std::vector<Criterion> criteria;
    step(10, [&] {
      details = queryDetails(id);
      Recordset rs = query::lookupRows("select ITEM_ID,QUERY_FUNCTION,QUERY_VALUE from ADMGRIDD where CODE_ID = '" +
                                   sqlQuote(id) + "' and ITEM_ID not like '%.UDF_%' and " +
                                   gfncEmptyCondition("QUERY_VALUE", "<>", d));
      if (!rs.isOpen()) return;
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
        criteria.push_back({upperTrim(rs.get(0).text()), trim(rs.get(1).text()), rtrim(rs.get(2).text())});
      }
    });
    std::vector<std::string> clauses;
    std::string tmpl;
    bool templateRead = false;
    step(20, [&] {
      for (const Criterion& c : criteria) {
        if (c.function.empty() || trim(c.value).empty() || !isFieldName(c.field)) continue;
        if (flag == "Y" && gfncAccessToField(c.field, strAccess) <= 0) continue;
        std::string type = upperTrim(fieldDataType(c.field));
        if (type.empty()) type = "S";
        std::string clause = criterionClause(d, c, type, tmpl, templateRead);
        if (!clause.empty()) clauses.push_back(clause);
      }
    });
    std::string where = join(clauses, " and ");
    step(30, [&] {
      if (!details.noteId.empty()) addNoteCondition(where, noteText(details.noteId));
      // The query's own condition is one group before anything is joined
      // to it with " and " (restrictions here, the employee and variation
      // tests in gfncBuildSQL).
      where = asOneGroup(where, "query " + id);
    });
    step(40, [&] {
      if (flag == "Y" && !details.entityId.empty()) gsubAddSelection(details.entityId, strAccess, where, "Y");
    });
    result = where;
  });
  return result;
}

std::string gfncBuildSelect(const std::string& strAccess, const std::string& strQueryID,
                            const std::string& strApplyAccess, const std::string& strFormSettings) {
  std::string result;
  auto proc = query::procedure(query::kGridModule, "gfncBuildSelect");
  proc.variables([&] {
    return Dump()
        .item("STRACCESS:", strAccess)
        .item("STRQUERYID:", strQueryID)
        .item("STRAPPLYACCESS:", strApplyAccess)
        .text();
  });
  proc.run([&](Steps& step) {
    const std::string flag = applyFlag(strApplyAccess);
    const std::string id = trim(strQueryID);
    const Dialect d = currentDialect();
    QueryDetails details;
    std::set<std::string> unauthorisedTables;
    std::string note;
    step(10, [&] {
      details = queryDetails(id);
      gfncQueryHasUDF(id);
      // Read for self-service forms; it changes nothing in the select list.
      (void)getKeyedValue(strFormSettings, "PORTAL_FORM");
      if (flagIsTrue(getKeyedValue(strFormSettings, "INCLUDE_UNAUTHORISED"))) {
        std::string tables = replace(getKeyedValue(strFormSettings, "INCLUDE_UNAUTHORISED_TABLES"), " ", "");
        for (const std::string& t : split(tables, ",")) {
          if (!t.empty()) unauthorisedTables.insert(ucase(t));
        }
      }
      if (!details.noteId.empty()) note = trim(noteText(details.noteId));
    });
    // A note that is a whole SELECT gives the select part as it stands.
    if (ucase(left(note, 7)) == "SELECT ") {
      long p = instr(note, " WHERE ", Compare::Text);
      result = p > 0 ? left(note, p - 1) : note;
      return;
    }
    const std::string driving = details.entityId;
    std::string factor = "1.00";
    step(20, [&] {
      if (driving == "PNLEMPABS") factor = format(Value(static_cast<long>(gfncAbsDecimalFactor())), "Standard");
    });
    std::string order = "QUERY_FUNCTION asc, ITEM_ID asc";
    step(30, [&] {
      const std::string& type = details.queryType;
      if (type == "X" || type == "V" || type == "C") {
        order = "COLUMN_POSITION asc, ITEM_ID asc";
      } else if (type == "Q") {
        Recordset probe = query::lookupRows("select ITEM_ID from ADMGRIDD where CODE_ID = '" + sqlQuote(id) +
                                        "' and INCLUDE_YN = 'Y' and COLUMN_POSITION = 1");
        if (probe.isOpen() && !probe.eof()) order = "COLUMN_POSITION asc, ITEM_ID asc";
      }
    });
    std::vector<std::string> fields;
    step(40, [&] {
      Recordset rs = query::lookupRows("select ITEM_ID, QUERY_FUNCTION, QUERY_VALUE, SUB_TOTALS from ADMGRIDD where CODE_ID = '" +
                                   sqlQuote(id) + "' and INCLUDE_YN = 'Y' and ITEM_ID not like '%.UDF_%' order by " +
                                   order);
      if (!rs.isOpen()) return;
      for (rs.moveFirst(); !rs.eof(); rs.moveNext()) fields.push_back(upperTrim(rs.get(0).text()));
    });
    SelectList list(d);
    step(50, [&] {
      for (const std::string& field : fields) {
        if (!isFieldName(field)) continue;
        const std::string table = field.substr(0, field.find('.'));
        if (flag == "Y" && !unauthorisedTables.count(table) && gfncAccessToField(field, strAccess) <= 0) continue;
        addColumn(list, driving, field, factor);
      }
      std::string items = list.text();
      if (driving == "PAYCON") list.addRaw("PAYCON.CODE_ID as SEQ_ID", "SEQ_ID");
      if (driving == "PNLEMPMST" && details.queryType == "A" && items.find("PNLEMPMST.EMP_ID") == std::string::npos) {
        list.addRaw("PNLEMPMST.EMP_ID as EMP_ID", "EMP_ID");
      }
    });
    if (list.empty()) {
      result = isIdentifier(driving) ? "SELECT " + driving + ".*" : "SELECT *";
    } else {
      result = "SELECT " + list.text();
    }
  });
  return result;
}

std::string gfncBuildSQL(const std::string& argUserID, const std::string& argQueryID,
                         const std::string& strPortalFormRef, const std::string& strApplyAccess,
                         const std::string& strFormSettings) {
  std::string result;
  // The procedure's locals, dumped by its error block.
  std::string strUserID = trim(argUserID);
  std::string strQueryID = trim(argQueryID);
  std::string strApply = strApplyAccess;
  std::string strVariationWhere, strQueryType, strCheckFor, strSQL, strFieldList, strDriver, strWhere, strAR;
  std::string strOrgStructure, strUserEmpID;
  bool bolThisEmployeeOnly = false;
  bool bolEmployeeTable = false;
  long whereIndex = 0;

  auto proc = query::procedure(query::kGridModule, "gfncBuildSQL");
  proc.variables([&] {
    return Dump()
        .item("STRPORTALFORMREF:", strPortalFormRef)
        .item("STRAPPLYACCESS:", strApply)
        .item("STRVARIATION_WHERE = ", strVariationWhere)
        .item("BOLTHISEMPLOYEEONLY = ", bolThisEmployeeOnly)
        .item("BOLEMPLOYEETABLE = ", bolEmployeeTable)
        .item("STRQUERYTYPE = ", strQueryType)
        .item("STRCHECKFOR = ", strCheckFor)
        .item("STRQUERYID = ", strQueryID)
        .item("STRUSERID = ", strUserID)
        .item("STRSQL = ", strSQL)
        .item("STRFIELDLIST = ", strFieldList)
        .item("STRDRIVER = ", strDriver)
        .item("STRWHERE = ", strWhere)
        .item("WHEREINDEX = ", whereIndex)
        .item("STRAR = ", strAR)
        .item("STRORGSTRUCTURE = ", strOrgStructure)
        .item("STRUSEREMP_ID = ", strUserEmpID)
        .text();
  });
  proc.parameters([&] { return Dump().item("ARGUSERID:", argUserID).item("ARGQUERYID:", argQueryID).text(); });
  state().warnings.clear();
  proc.run([&](Steps& step) {
    if (strQueryID.empty()) return;
    BuildScope scope;
    const Dialect d = currentDialect();
    const std::string v = variationQuoted();
    BuilderState& s = state();
    QueryDetails details;

    // 2. The header; the caller's "N" switches the access filter off.
    step(20, [&] {
      details = queryDetails(strQueryID);
      if (applyFlag(strApplyAccess) != "N") strApply = details.applyAccessFilter;
      else strApply = "N";
      strQueryType = details.queryType;
      s = BuilderState();
      s.from = details.entityId;
      s.joined.insert(ucase(details.entityId));
    });
    if (strQueryType == "F") return;

    const std::string t = details.entityId;
    if (strQueryType == "U") {
      // 4. Hand-written SQL: only access restrictions and form variables.
      std::string sql;
      step(41, [&] {
        sql = trim(noteText(details.noteId));
        strSQL = sql;
      });
      const std::string placeholder = "99=99";
      step(42, [&] {
        if (strApply != "Y") return;
        whereIndex = fncWhereIndex(sql);
        strCheckFor = placeholder;
        const bool hasPlaceholder = instr(sql, placeholder, Compare::Text) > 0;
        // The statement's own WHERE text, without a closing ORDER BY (or
        // GROUP BY, HAVING, LIMIT) that the restriction must not follow;
        // one group, so that its OR cannot escape the restriction.
        std::string restriction;
        std::string tail;
        if (!hasPlaceholder) {
          const size_t start = whereIndex >= 1 ? static_cast<size_t>(whereIndex) + 6 : 0;
          const size_t from = findTopLevel(sql, "FROM", 0);
          const size_t end = whereTextEnd(sql, std::max(start, from == std::string::npos ? start : from));
          if (end != std::string::npos) {
            tail = " " + sql.substr(end);
            sql = rtrim(sql.substr(0, end));
          }
          if (whereIndex >= 1) restriction = asOneGroup(mid(sql, whereIndex + 7), "query " + strQueryID);
        }
        const std::string own = restriction;
        const std::string user = strUserID.empty() ? currentUser() : strUserID;
        strDriver = userAccessDriver(user);
        // The restrictions are written for the driver table when the
        // statement reads it, else for the query's own table.
        std::string table = strDriver;
        if ((strDriver.empty() || !mentionsTable(sql, strDriver)) && !t.empty()) table = t;
        gsubAddSelection(table, strUserID, restriction, "Y");
        // Fail closed: restriction rows that found no place give no row.
        if (restriction == own && gfncHasRowRestrictions(strUserID)) {
          restriction = trim(own).empty() ? "1=0" : own + " and 1=0";
          s.warnings.push_back("user " + user + " has data-access restrictions that cannot be applied to query " +
                               strQueryID + " (" + (strDriver.empty() ? "no access driver" : "access driver " + strDriver) +
                               ", no employee table to attach them to): it returns no row");
        }
        strAR = restriction;
        // 3. Placed where the placeholder stands, else after the WHERE.
        if (hasPlaceholder) {
          if (!trim(restriction).empty()) sql = replace(sql, placeholder, restriction, Compare::Text);
        } else if (whereIndex < 1 && !trim(restriction).empty()) {
          sql = sql + " WHERE " + restriction;
        } else if (whereIndex >= 1) {
          sql = left(sql, whereIndex + 6) + restriction;
        }
        sql += tail;
        strSQL = sql;
      });
      step(44, [&] {
        subApplyFormVariables(sql);
        strSQL = sql;
      });
      result = sql;
      return;
    }

    // 5. Other types.
    step(51, [&] { bolEmployeeTable = !t.empty() && tableHasEmployee(t); });
    strVariationWhere = "= '" + v + "'";
    bool selfServiceEmpty = false;
    std::string orgCondition;
    step(53, [&] {
      if (strQueryType != "D") return;
      Recordset rs = query::lookupRows("SELECT NOTE_TEXT FROM ADMNOTE WHERE TITLE_TEXT = 'FA_" +
                                   sqlQuote(trim(strPortalFormRef)) + "'");
      std::string noteBody = rs.isOpen() && !rs.eof() ? rs.get(0).text() : std::string();
      strOrgStructure = getKeyedValue(noteBody, "ORG_STRUCTURE");
      if (!strOrgStructure.empty()) {
        strUserEmpID = userEmployeeId(strUserID);
        auto units = orgStructureUnits(strUserEmpID, strOrgStructure);
        if (!units || units->empty() || !bolEmployeeTable) {
          selfServiceEmpty = true;
          return;
        }
        orgCondition = orgStructureCondition(t, strOrgStructure, *units, "X,Z");
        strVariationWhere = "= '" + v + "' and " + orgCondition;
        strApply = "N";
      } else {
        std::string formAccess = getKeyedValue(noteBody, "DATA_ACCESS");
        strVariationWhere = "= '" + sqlQuote(formAccess.empty() ? gfncCompanyCode() : formAccess) + "'";
      }
    });
    if (selfServiceEmpty) return;

    // 6. The variation-scoped master joins.
    step(60, [&] { addMasterJoins(d, t, v, bolEmployeeTable); });

    // 7. Restricted to one employee.
    const bool employeeQuery = bolEmployeeTable && !startsWith(t, "PNLVAC") && !startsWith(t, "PNLCAND");
    bolThisEmployeeOnly = employeeQuery && (strQueryType == "S" || strQueryType == "C" ||
                                            (strQueryType == "V" && strApply == "Y"));

    // 8. Criteria and select list.
    step(80, [&] {
      strWhere = trim(gfncBuildWhere(strUserID, strQueryID, strApply));
      strFieldList = trim(gfncBuildSelect(strUserID, strQueryID, strApply, strFormSettings));
    });
    step(90, [&] {
      const std::string from = trim(s.from);
      // 9. The select and from parts.
      strSQL = strFieldList;
      if (ucase(left(strSQL, 7)) != "SELECT ") strSQL = "select " + strSQL;
      if (instr(ucase(strSQL), " FROM ") == 0) strSQL += " from " + from;
      strSQL = trim(strSQL);

      // 10. The employee test.
      const bool noWhere = instr(details.description, "NOWHERE") > 0;
      if (bolThisEmployeeOnly) {
        std::string emp = trim(HREnvironment::session().GlobalVariable("EMP_ID").text());
        if (emp.empty()) emp = trim(HREnvironment::session().EmployeeCode());
        if (strQueryType == "V") emp = "UNIQUE_EMPLOYEE_REFERENCE";
        const std::string test = t + ".EMP_ID = '" + sqlQuote(emp) + "'";
        if (strWhere.empty() || noWhere) {
          if (!noWhere) strWhere = test;
        } else {
          strWhere = test + " and " + strWhere;
        }
      }
      // 11. The variation test.
      strWhere = rtrim(strWhere);
      if (!noWhere) {
        if (!strWhere.empty()) strWhere += " and ";
        strWhere += t + ".VARIATION_ID " + strVariationWhere;
      }
      // 12. Oracle's outer-join conditions.
      if (!s.extraWhere.empty()) strWhere += s.extraWhere;
      // 13.
      if (!strWhere.empty()) {
        if (!startsWith(upperTrim(strWhere), "WHERE ")) strSQL += " where ";
        strSQL += " " + strWhere;
      }
    });
    step(140, [&] {
      subApplyFormVariables(strSQL);
      result = trim(strSQL);
    });
  });
  return result;
}

}  // namespace orvalis
