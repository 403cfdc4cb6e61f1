// Stored queries: the header (ADMGRIDH) and what can be asked of a query's
// rows (ADMGRIDD) without building it.
//
// A stored query is a header row (CODE_ID, USER_ID, ENTITY_ID the driving
// table, QUERY_TYPE, ACCESS_BY_ALL, DESCRIPTION, NOTE_ID, APPLY_ACCESS_FILTER)
// and detail rows, one per field used ("<TABLE>.<COLUMN>" in ITEM_ID, the
// output flag INCLUDE_YN, COLUMN_POSITION, the criterion's QUERY_FUNCTION and
// QUERY_VALUE, SUB_TOTALS). Hand-written SQL lives in notes (ADMNOTE, keyed by
// SEQ_ID, text in NOTE_TEXT).
//
// Procedures of the query builder's module (error block "HRSQLControl").
// They read through the current environment; single-threaded.
#pragma once

#include <map>
#include <string>

namespace orvalis {

struct QueryDetails {
  std::string queryId;
  std::string userId;
  std::string entityId;
  std::string description;
  bool accessByAll = false;
  std::string queryType;
  std::string noteId;
  std::string applyAccessFilter;  // "Y" or "N" once normalised
  bool found = false;             // the header row exists
};

// Reads the header of strQueryID and normalises it: every text trimmed;
// APPLY_ACCESS_FILTER reduced to its first letter, for type "U" "N" when
// empty (and an empty ENTITY_ID taken from the note's SQL), then "N" for
// "N", "0" or "F" and "Y" otherwise. A query that is not found leaves empty
// details (with APPLY_ACCESS_FILTER "Y").
void gsubQueryDetails(const std::string& strQueryID, QueryDetails& udtDetails);

// While one is alive (on this thread), gsubQueryDetails reads each query's
// header once and answers again from memory: a command that checks a query
// and then builds its statement reads ADMGRIDH once. Scopes nest; an inner
// one keeps to the outer one's headers. Open one only around work that
// does not change the headers it reads.
class QueryHeaderScope {
 public:
  QueryHeaderScope();
  ~QueryHeaderScope();
  QueryHeaderScope(const QueryHeaderScope&) = delete;
  QueryHeaderScope& operator=(const QueryHeaderScope&) = delete;

 private:
  std::map<std::string, QueryDetails> headers_;
  bool outermost_;
};

// The driving table of a query; for a hand-written query without one, the
// table its note's SQL reads (the word after FROM, else the table
// qualifying ".VARIATION_ID").
std::string gfncQueryEntity(const std::string& strCodeID);

// Whether the query shows a column of this name (any table).
bool gfncGridFieldEntity(const std::string& strGridID, const std::string& strColumn);

// Whether the query uses a user-defined field (as a column or criterion).
bool gfncQueryHasUDF(const std::string& strCodeID);

// The text of a note (ADMNOTE.NOTE_TEXT by SEQ_ID); "" when there is none.
std::string noteText(const std::string& noteId);

// The table an SQL text reads: the word after its first FROM, else the
// table qualifying ".VARIATION_ID"; "" when neither is found.
std::string tableOfSql(const std::string& sql);

}  // namespace orvalis
