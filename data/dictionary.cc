#include "data/dictionary.h"

#include <unordered_map>

#include "data/data_functions.h"
#include "data/hr_environment.h"
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

struct Cache {
  bool loaded = false;
  unsigned long generation = 0;
  std::unordered_map<std::string, FieldFacts> fields;     // "TABLE.COLUMN"
  std::unordered_map<std::string, EntityFacts> entities;  // "TABLE"
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

const Cache& loaded() {
  Cache& c = cache();
  if (c.loaded && c.generation == HREnvironment::generation()) return c;
  c = Cache();
  c.generation = HREnvironment::generation();
  c.loaded = true;
  if (HREnvironment::get() == nullptr) return c;

  Recordset fields =
      openRecordset("select ENTITY_ID, FIELD_ID, CAPTION, DATA_TYPE, FK_TABLE, SMALL_VALUE from ADMDDFLD");
  if (fields.isOpen()) {
    for (long row = 0; row < fields.rowCount(); ++row) {
      FieldFacts f;
      f.caption = trim(fields.at(row, 2).text());
      f.dataType = upperTrim(fields.at(row, 3).text());
      f.fkTable = upperTrim(fields.at(row, 4).text());
      f.smallValue = markedY(fields.at(row, 5).text());
      c.fields[upperTrim(fields.at(row, 0).text()) + "." + upperTrim(fields.at(row, 1).text())] = std::move(f);
    }
  }
  Recordset entities = openRecordset("select ENTITY_ID, CAPTION, NUMERIC_SEQ_ID, KEY_STRUCTURE from ADMDDENT");
  if (entities.isOpen()) {
    for (long row = 0; row < entities.rowCount(); ++row) {
      EntityFacts e;
      e.caption = trim(entities.at(row, 1).text());
      e.numericSeqId = markedY(entities.at(row, 2).text());
      e.keyStructure = trim(entities.at(row, 3).text());
      c.entities[upperTrim(entities.at(row, 0).text())] = std::move(e);
    }
  }
  return c;
}

const FieldFacts* findField(const std::string& field) {
  const Cache& c = loaded();
  auto it = c.fields.find(upperTrim(field));
  return it == c.fields.end() ? nullptr : &it->second;
}

const EntityFacts* findEntity(const std::string& table) {
  const Cache& c = loaded();
  auto it = c.entities.find(upperTrim(table));
  return it == c.entities.end() ? nullptr : &it->second;
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
