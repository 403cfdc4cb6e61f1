#include "data/dictionary.h"

#include <optional>
#include <unordered_map>

#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

struct FieldFacts {
  std::string caption;
  std::string dataType;
  std::string fkTable;
  bool smallValue = false;
};

struct EntityFacts {
  std::string caption;
  std::string keyStructure;
  bool numericSeqId = false;
};

// What the dictionary says of one table, read on the first question about
// it: its columns (ADMDDFLD) and its own row (ADMDDENT), each when first
// asked for.
struct TableFacts {
  bool fieldsRead = false;
  bool entityRead = false;
  std::unordered_map<std::string, FieldFacts> fields;  // "COLUMN"
  std::optional<EntityFacts> entity;
};

struct Cache {
  unsigned long generation = 0;
  std::unordered_map<std::string, TableFacts> tables;  // "TABLE"
};

Cache& cache() {
  thread_local Cache c;
  return c;
}

// The dictionary marks its Boolean columns (SMALL_VALUE, NUMERIC_SEQ_ID)
// with "Y" alone: a blank or any other letter is no. This is neither of the
// readings in runtime/flags.h (an empty column must not read as yes, and
// "T" or "1" never mark a dictionary column), so it stays here.
bool markedY(const std::string& flag) { return ucase(left(trim(flag), 1)) == "Y"; }

// The cached facts of `table` (upper case, trimmed); nullptr without an
// environment.
TableFacts* tableFacts(const std::string& table) {
  Cache& c = cache();
  if (c.generation != HREnvironment::generation()) {
    c = Cache();
    c.generation = HREnvironment::generation();
  }
  if (HREnvironment::get() == nullptr) return nullptr;
  return &c.tables[table];
}

void readFields(const std::string& table, TableFacts& t) {
  t.fieldsRead = true;
  if (table.empty()) return;
  Recordset rows = openRecordset("select FIELD_ID, CAPTION, DATA_TYPE, FK_TABLE, SMALL_VALUE from ADMDDFLD where ENTITY_ID = '" +
                                 sqlQuote(table) + "'");
  if (!rows.isOpen()) return;
  for (long row = 0; row < rows.rowCount(); ++row) {
    FieldFacts f;
    f.caption = trim(rows.at(row, 1).text());
    f.dataType = upperTrim(rows.at(row, 2).text());
    f.fkTable = upperTrim(rows.at(row, 3).text());
    f.smallValue = markedY(rows.at(row, 4).text());
    t.fields[upperTrim(rows.at(row, 0).text())] = std::move(f);
  }
}

void readEntity(const std::string& table, TableFacts& t) {
  t.entityRead = true;
  if (table.empty()) return;
  Recordset rows = openRecordset("select CAPTION, NUMERIC_SEQ_ID, KEY_STRUCTURE from ADMDDENT where ENTITY_ID = '" +
                                 sqlQuote(table) + "'");
  if (!rows.isOpen() || rows.rowCount() == 0) return;
  EntityFacts e;
  e.caption = trim(rows.at(0, 0).text());
  e.numericSeqId = markedY(rows.at(0, 1).text());
  e.keyStructure = trim(rows.at(0, 2).text());
  t.entity = std::move(e);
}

// "TABLE.COLUMN": the table is what comes before the first ".".
const FieldFacts* findField(const std::string& field) {
  const std::string name = upperTrim(field);
  const size_t dot = name.find('.');
  if (dot == std::string::npos) return nullptr;
  const std::string table = name.substr(0, dot);
  TableFacts* t = tableFacts(table);
  if (t == nullptr) return nullptr;
  if (!t->fieldsRead) readFields(table, *t);
  auto it = t->fields.find(name.substr(dot + 1));
  return it == t->fields.end() ? nullptr : &it->second;
}

const EntityFacts* findEntity(const std::string& table) {
  const std::string name = upperTrim(table);
  TableFacts* t = tableFacts(name);
  if (t == nullptr) return nullptr;
  if (!t->entityRead) readEntity(name, *t);
  return t->entity ? &*t->entity : nullptr;
}

}  // namespace

std::string gfncGetFKTable(const std::string& table, const std::string& column) {
  return gfncGetFKTable(trim(table) + "." + trim(column));
}

std::string gfncGetFKTable(const std::string& field) {
  const FieldFacts* f = findField(field);
  return f ? f->fkTable : std::string();
}

std::string gfncFieldLabel(const std::string& field) {
  const FieldFacts* f = findField(field);
  if (f && !f->caption.empty()) return f->caption;
  std::string name = trim(field);
  size_t dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(dot + 1);
}

std::string gfncFieldLabel(const std::string& table, const std::string& column) {
  return gfncFieldLabel(trim(table) + "." + trim(column));
}

std::string fieldDataType(const std::string& field) {
  const FieldFacts* f = findField(field);
  return f ? f->dataType : std::string();
}

bool gfncNumericSEQ_ID(const std::string& table) {
  const EntityFacts* e = findEntity(table);
  return e && e->numericSeqId;
}

bool gfncUnifaceSmallValue(const std::string& field) {
  const FieldFacts* f = findField(field);
  return f && f->smallValue;
}

std::string entityCaption(const std::string& table) {
  const EntityFacts* e = findEntity(table);
  if (e && !e->caption.empty()) return e->caption;
  return trim(table);
}

std::string entityKeyStructure(const std::string& table) {
  const EntityFacts* e = findEntity(table);
  return e ? e->keyStructure : std::string();
}

std::string currentUserId() {
  Environment* env = HREnvironment::get();
  if (env == nullptr) return "";
  return trim(env->HREnvironment().UserCode());
}

void clearDictionaryCache() { cache() = Cache(); }

}  // namespace orvalis
