// The data dictionary rows that describe the schema.
//
// ADMDDENT gets one row per table: its caption, its module (the first three
// letters of the name for PNL/ADM/PAY tables), whether its SEQ_ID is a
// running number (an INTEGER SEQ_ID column) and its key columns.
// ADMDDFLD gets one row per column: the caption, the data type letter
// ("D" for DATE, "N" for numbers, "B" for SMALLINT yes/no columns, "T" for
// the clock-time texts, "S" otherwise), the code table behind a code column
// (FK_TABLE), 'Y' in SMALL_VALUE for figures stored in hundredths, and the
// declared size. A few rows describe fields the reports name that are not
// stored columns (PNLEMPMST.HOME_PHONE_HOME, PNLEMPHESAC.STAFF_ID).
//
// Built from the parsed DDL and the curated captions and code-table links
// kept in dictionary_rows.cc. Plain values; thread-compatible.
#pragma once

#include <string>
#include <vector>

#include "schema/ddl_model.h"

namespace orvalis {

struct DictionaryEntity {
  std::string entity;
  std::string caption;
  std::string module;
  std::string numericSeqId;  // "Y" / "N"
  std::string keyStructure;  // key columns joined with ","
};

struct DictionaryField {
  std::string entity;
  std::string field;
  int sequence = 0;
  std::string caption;
  std::string dataType;  // "S", "D", "T", "N", "B"
  std::string fkTable;   // "" when none
  std::string smallValue;  // "Y" / "N"
  int size = 0;
  bool stored = true;  // false for the described-only fields
};

std::vector<DictionaryEntity> dictionaryEntities(const DdlModel& model);
std::vector<DictionaryField> dictionaryFields(const DdlModel& model);

// The code table a column draws its codes from by the dictionary's rules
// ("" when none); the generator and the tests check codes against it.
std::string codeTableOf(const std::string& table, const std::string& column);

}  // namespace orvalis
