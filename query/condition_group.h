// Keeping a stored condition together when other conditions are joined to
// it.
//
// A query's criteria, the condition in its note and the WHERE text of a
// hand-written statement are written by users. Before the builder joins the
// user's access restrictions, the employee test or the variation test to
// such a text with " and ", the text must read as one group: "A OR B and R"
// would let every row through A. conditionShape says whether brackets are
// needed; asOneGroup adds them. A text without a top-level OR is left
// exactly as it is, so the statements of queries without OR do not change.
//
// Free functions on text; thread-safe.
#pragma once

#include <string>

namespace orvalis {

enum class ConditionShape {
  Plain,       // nothing at the top level that " and " could escape
  NeedsGroup,  // a top-level OR, or a comment marker ("--", "/*")
  Unbalanced,  // a bracket closed before it was opened, left open, or an
               // unterminated quoted text: no bracket can hold it together
};

// Scans outside quoted text ('...', "...") and outside brackets. OR counts
// as a whole word only ("ORDER", "COLOR", "OR_ID" do not).
ConditionShape conditionShape(const std::string& condition);

// "(" + condition + ")" when the shape needs a group, the condition itself
// when it is plain (or empty). An unbalanced condition raises error 5
// ("Invalid procedure call") naming `what`, so that no statement is built
// from it.
std::string asOneGroup(const std::string& condition, const std::string& what);

}  // namespace orvalis
